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
// Replaces every occurrence, searching from the start again after each
// replacement. A replacement that contains what it replaces would never end;
// none of the fixed pairs below does.
void ReplaceAll(std::string &text, std::string_view from, std::string_view to)
{
    std::size_t at;
    while ((at = text.find(from)) != std::string::npos)
        text.replace(at, from.size(), to);
}

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
    std::string p = pattern;
    // Every step but the last replaces a backslash sequence, and the last
    // only undoes the first.
    if (p.find('\\') == std::string::npos && p.find('\x01') == std::string::npos)
        return p;
    ReplaceAll(p, "\\\\", "\x01");
    ReplaceAll(p, "\\i", "([^\\W\\d]|:)");
    ReplaceAll(p, "\\I", "([\\W\\d])");
    ReplaceAll(p, "\\c", "(\\w|\\.|-|:)");
    ReplaceAll(p, "\\C", "([^\\w\\.\\-\\:])");
    ReplaceAll(p, "\\p{IsBasicLatin}", "[\\000-\\177]");
    ReplaceAll(p, "\\p{IsLatin-1Supplement}", "[\\200-\\377]");
    ReplaceAll(p, "\\p{IsLatinExtended-A}", "[\\400-\\577]");
    ReplaceAll(p, "\\p{IsLatinExtended-B}", "[\\600-\\1117]");
    ReplaceAll(p, "\x01", "\\\\");
    return p;
}

bool MatchesXsdPattern(std::string const &pattern, std::string const &value)
{
    return CXsdPattern(pattern).Matches(value);
}

CXsdPattern::CXsdPattern(std::string const &pattern, bool forManyValues)
    : m_compiled(nullptr), m_study(nullptr), m_captures(0)
{
    std::string const regex = "^(" + TranslateXsdPattern(pattern) + ")$";
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
