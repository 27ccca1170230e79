#include "values/XsdPattern.h"

#include "runtime/FormatString.h"
#include "runtime/MxException.h"
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
void ReplaceAll(std::string &text, std::string const &from, std::string const &to)
{
    std::size_t at;
    while ((at = text.find(from)) != std::string::npos)
        text.replace(at, from.size(), to);
}

struct PcreHolder
{
    pcre *compiled = nullptr;
    ~PcreHolder()
    {
        // Compiled patterns come from PCRE's allocator, which is malloc.
        std::free(compiled);
    }
};

// The subject as UTF-8, by the library's one local-to-UTF-8 conversion.
std::string ToUtf8(std::string const &local)
{
    CBinaryData const utf8 = LocalToUtf8(local.c_str());
    return std::string(reinterpret_cast<char const *>(utf8.GetData()), utf8.GetLength());
}
} // namespace

std::string TranslateXsdPattern(std::string const &pattern)
{
    std::string p = pattern;
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
    std::string const regex = "^(" + TranslateXsdPattern(pattern) + ")$";
    char const *error = nullptr;
    int errorOffset = 0;
    PcreHolder holder;
    holder.compiled = pcre_compile(regex.c_str(), PCRE_UTF8, &error, &errorOffset, nullptr);
    if (holder.compiled == nullptr)
        throw CMxException(
            FormatString("Invalid Regular Expression: %s Error: '%s'", value.c_str(), error ? error : ""));
    int captures = 0;
    pcre_fullinfo(holder.compiled, nullptr, PCRE_INFO_CAPTURECOUNT, &captures);
    std::vector<int> offsets(static_cast<std::size_t>(captures + 1) * 3);
    std::string const subject = ToUtf8(value);
    int const length = static_cast<int>(std::strlen(subject.c_str()));
    int const rc = pcre_exec(holder.compiled, nullptr, subject.c_str(), length, 0, PCRE_ANCHORED, offsets.data(),
                             static_cast<int>(offsets.size()));
    return rc >= 1 && offsets[0] == 0 && offsets[1] == length;
}

} // namespace MxXmlLib
