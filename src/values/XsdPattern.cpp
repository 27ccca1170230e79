#include "values/XsdPattern.h"

#include "runtime/FormatString.h"
#include "runtime/MxException.h"
#include "runtime/TextEncoding.h"
#include "values/BinaryData.h"

#include <cstdlib>
#include <cstring>
#include <pcre.h>
#include <vector>

namespace MxXmlLib
{

namespace
{
// The XSD escapes that PCRE reads otherwise, with their PCRE forms.
struct Escape
{
    std::string_view from;
    std::string_view to;
};
constexpr Escape kEscapes[] = {
    {"\\i", "([^\\W\\d]|:)"},
    {"\\I", "([\\W\\d])"},
    {"\\c", "(\\w|\\.|-|:)"},
    {"\\C", "([^\\w\\.\\-\\:])"},
    {"\\p{IsBasicLatin}", "[\\000-\\177]"},
    {"\\p{IsLatin-1Supplement}", "[\\200-\\377]"},
    {"\\p{IsLatinExtended-A}", "[\\400-\\577]"},
    {"\\p{IsLatinExtended-B}", "[\\600-\\1117]"},
};
} // namespace

std::string_view LocalToUtf8View(std::string const &local, std::string &converted)
{
    // Up to the first zero byte, as the conversion reads its input.
    std::size_t const length = std::strlen(local.c_str());
    auto const *bytes = reinterpret_cast<unsigned char const *>(local.c_str());
    if (IsASCIIOnly() || (IsUtf8PassThrough() && IsWellFormedUtf8(bytes, length)))
        return std::string_view(local.c_str(), length);
    CBinaryData const utf8 = LocalToUtf8(local.c_str());
    if (utf8.GetData())
        converted.assign(reinterpret_cast<char const *>(utf8.GetData()), utf8.GetLength());
    else
        converted.clear();
    return std::string_view(converted.c_str(), std::strlen(converted.c_str()));
}

namespace
{
} // namespace

std::string TranslateXsdPattern(std::string const &pattern)
{
    return TranslateXsdPattern(pattern, "", "");
}

// One pass from left to right gives what replacing each escape in turn over
// the whole text gives. Two backslashes are taken as a pair before anything
// else and come out as they are (as does a byte 1, which the replacements
// use to shield them, and so turn into two backslashes), so that no two
// backslashes stand side by side after them; every escape starts at a
// backslash and holds no other; and no replacement holds an escape or forms
// one with its neighbours (each starts with '(' or '[' and ends with ')' or
// ']').
std::string TranslateXsdPattern(std::string const &pattern, std::string_view before, std::string_view after)
{
    std::string p;
    p.reserve(before.size() + pattern.size() + after.size() + 16);
    p.append(before);
    std::size_t const n = pattern.size();
    for (std::size_t i = 0; i < n;)
    {
        char const c = pattern[i];
        if (c == '\x01')
        {
            p.append("\\\\", 2);
            ++i;
            continue;
        }
        if (c != '\\')
        {
            // The run up to the next backslash or byte 1 goes over as it is.
            std::size_t j = i + 1;
            while (j < n && pattern[j] != '\\' && pattern[j] != '\x01')
                ++j;
            p.append(pattern, i, j - i);
            i = j;
            continue;
        }
        if (i + 1 < n && pattern[i + 1] == '\\')
        {
            p.append("\\\\", 2);
            i += 2;
            continue;
        }
        std::string_view const rest(pattern.data() + i, n - i);
        bool replaced = false;
        for (Escape const &escape : kEscapes)
            if (rest.substr(0, escape.from.size()) == escape.from)
            {
                p.append(escape.to);
                i += escape.from.size();
                replaced = true;
                break;
            }
        if (!replaced)
        {
            p.push_back('\\');
            ++i;
        }
    }
    p.append(after);
    return p;
}

bool MatchesXsdPattern(std::string const &pattern, std::string const &value)
{
    return CXsdPattern(pattern).Matches(value);
}

CXsdPattern::CXsdPattern(std::string const &pattern, bool forManyValues)
    : m_compiled(nullptr), m_study(nullptr), m_captures(0)
{
    std::string const regex = TranslateXsdPattern(pattern, "^(", ")$");
    char const *error = nullptr;
    int errorOffset = 0;
    pcre *compiled = pcre_compile(regex.c_str(), PCRE_UTF8, &error, &errorOffset, nullptr);
    if (compiled == nullptr)
    {
        // The message names the value checked, so it is raised by Matches.
        m_error = error ? error : "";
        return;
    }
    pcre_fullinfo(compiled, nullptr, PCRE_INFO_CAPTURECOUNT, &m_captures);
    m_compiled = compiled;
    if (forManyValues)
    {
        // Without machine code support the study is null or plain, and
        // matching works as before.
        char const *studyError = nullptr;
        m_study = pcre_study(compiled, PCRE_STUDY_JIT_COMPILE, &studyError);
    }
}

CXsdPattern::~CXsdPattern()
{
    if (m_study != nullptr)
        pcre_free_study(static_cast<pcre_extra *>(m_study));
    // Compiled patterns come from PCRE's allocator, which is malloc.
    std::free(m_compiled);
}

CXsdPattern const &CCompiledPatternSlot::Get(std::string const &localPattern) const
{
    std::shared_ptr<CXsdPattern const> compiled = std::atomic_load(&m_compiled);
    if (compiled)
        return *compiled;
    std::string converted;
    auto made = std::make_shared<CXsdPattern const>(std::string(LocalToUtf8View(localPattern, converted)), true);
    // A thread that lost the race uses the winner's, so that what a caller
    // holds is never replaced under it.
    if (std::atomic_compare_exchange_strong(&m_compiled, &compiled, made))
        return *made;
    return *compiled;
}

bool CXsdPattern::Matches(std::string const &value) const
{
    if (m_compiled == nullptr)
        throw CMxException(FormatString("Invalid Regular Expression: %s Error: '%s'", value.c_str(), m_error.c_str()));
    // Most patterns have few groups: their offsets fit on the stack.
    std::size_t const slots = static_cast<std::size_t>(m_captures + 1) * 3;
    int local[30];
    std::vector<int> heap(slots > 30 ? slots : 0);
    int *const offsets = slots > 30 ? heap.data() : local;
    std::string converted;
    std::string_view const subject = LocalToUtf8View(value, converted);
    int const length = static_cast<int>(subject.size());
    // The pattern begins with '^', so it is anchored without PCRE_ANCHORED,
    // an option that would keep the match off the machine code.
    int const rc = m_study != nullptr
                       ? pcre_exec(static_cast<pcre const *>(m_compiled), static_cast<pcre_extra const *>(m_study),
                                   subject.data(), length, 0, 0, offsets, static_cast<int>(slots))
                       : pcre_exec(static_cast<pcre const *>(m_compiled), nullptr, subject.data(), length, 0,
                                   PCRE_ANCHORED, offsets, static_cast<int>(slots));
    return rc >= 1 && offsets[0] == 0 && offsets[1] == length;
}

} // namespace MxXmlLib
