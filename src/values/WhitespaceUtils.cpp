#include "values/WhitespaceUtils.h"

#include "runtime/FormatString.h"
#include "runtime/MxException.h"

#include <cstring>

namespace MxXmlLib
{

std::string CWhitespaceUtils::ApplyRule(WhitespaceRule rule, std::string const &text)
{
    switch (rule)
    {
    case WhitespaceRule::None:
        return text;
    case WhitespaceRule::Preserve:
        return Preserve(text);
    case WhitespaceRule::Replace:
        return Replace(text);
    case WhitespaceRule::Collapse:
        return Collapse(text);
    }
    throw CMxInvalidValueException(FormatString("Unknown WhitespaceRule"));
}

std::string CWhitespaceUtils::Preserve(std::string const &text)
{
    if (text.find('\r') == std::string::npos)
        return text;
    return Preserve(text.c_str(), static_cast<int>(text.size()));
}

std::string CWhitespaceUtils::Preserve(char const *text, int length)
{
    std::string out;
    if (text == nullptr || length <= 0)
        return out;
    out.reserve(static_cast<std::size_t>(length));
    for (int i = 0; i < length && text[i] != '\0'; ++i)
    {
        if (text[i] != '\r')
        {
            out.push_back(text[i]);
            continue;
        }
        out.push_back('\n');
        if (i + 1 < length && text[i + 1] == '\n')
            ++i;
    }
    return out;
}

std::string CWhitespaceUtils::Replace(std::string const &text)
{
    if (text.find_first_of("\r\n\t") == std::string::npos)
        return text;
    std::string out;
    out.reserve(text.size());
    for (char const *p = text.c_str(); *p; ++p)
    {
        if (*p == '\r' && p[1] == '\n')
        {
            out.push_back(' ');
            ++p;
        }
        else if (*p == '\r' || *p == '\n' || *p == '\t')
            out.push_back(' ');
        else
            out.push_back(*p);
    }
    return out;
}

std::string CWhitespaceUtils::Collapse(std::string const &text)
{
    // Most values (numbers, dates, codes) hold no blank and no zero byte:
    // they come out as they are, without the character-by-character copy.
    bool plain = true;
    for (char const c : text)
        if (c <= ' ' && (c == '\0' || IsWhiteSpace(c)))
        {
            plain = false;
            break;
        }
    if (plain)
        return text;
    std::string out;
    out.reserve(text.size());
    // A run is written as its blank only when a non-blank follows it, which
    // drops the runs at both ends.
    bool pendingBlank = false;
    for (char const *p = text.c_str(); *p; ++p)
    {
        if (IsWhiteSpace(*p))
        {
            pendingBlank = !out.empty();
            continue;
        }
        if (pendingBlank)
            out.push_back(' ');
        pendingBlank = false;
        out.push_back(*p);
    }
    return out;
}

} // namespace MxXmlLib
