#include "runtime/FormatString.h"

#include "runtime/TextEncoding.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <cwchar>

namespace MxXmlLib
{

namespace
{

// Formats one conversion with the C formatter; `spec` is the conversion
// already rewritten for this platform, `args` its width, precision and value.
template <typename... T> void AppendOne(std::string &out, std::string const &spec, T... args)
{
    char small[256];
    int n = std::snprintf(small, sizeof(small), spec.c_str(), args...);
    if (n < 0)
        return;
    if (static_cast<std::size_t>(n) < sizeof(small))
    {
        out.append(small, static_cast<std::size_t>(n));
        return;
    }
    std::string big(static_cast<std::size_t>(n) + 1, '\0');
    std::snprintf(&big[0], big.size(), spec.c_str(), args...);
    out.append(big.data(), static_cast<std::size_t>(n));
}

} // namespace

std::string FormatString(char const *format, ...)
{
    std::string out;
    if (format == nullptr)
        return out;
    va_list args;
    va_start(args, format);
    char const *p = format;
    while (*p)
    {
        if (*p != '%')
        {
            char const *run = std::strchr(p, '%');
            std::size_t len = run ? static_cast<std::size_t>(run - p) : std::strlen(p);
            out.append(p, len);
            p += len;
            continue;
        }
        char const *start = p++;
        if (*p == '%')
        {
            out.push_back('%');
            ++p;
            continue;
        }
        // flags, width, precision: '*' consumes an int argument each
        std::string spec = "%";
        while (*p && std::strchr("-+ #0", *p))
            spec.push_back(*p++);
        int width = 0, precision = -1;
        bool starWidth = false, starPrecision = false;
        if (*p == '*')
        {
            starWidth = true;
            width = va_arg(args, int);
            ++p;
        }
        else
            while (*p >= '0' && *p <= '9')
                width = width * 10 + (*p++ - '0');
        if (*p == '.')
        {
            ++p;
            precision = 0;
            if (*p == '*')
            {
                starPrecision = true;
                precision = va_arg(args, int);
                ++p;
            }
            else
                while (*p >= '0' && *p <= '9')
                    precision = precision * 10 + (*p++ - '0');
        }
        (void)starWidth;
        (void)starPrecision;
        // size modifiers
        enum
        {
            None,
            Short,
            Long,
            LongLong,
            LongDouble
        } size = None;
        for (;;)
        {
            if (p[0] == 'I' && p[1] == '6' && p[2] == '4')
            {
                size = LongLong;
                p += 3;
            }
            else if (*p == 'h')
            {
                size = Short;
                ++p;
            }
            else if (*p == 'l')
            {
                size = size == Long ? LongLong : Long;
                ++p;
            }
            else if (*p == 'L')
            {
                size = LongDouble;
                ++p;
            }
            else if (*p == 'F' || *p == 'N' || *p == 'z' || *p == 'j' || *p == 't' || *p == 'q')
            {
                if (*p == 'z' || *p == 'j' || *p == 't' || *p == 'q')
                    size = LongLong;
                ++p;
            }
            else
                break;
        }
        char conv = *p;
        if (conv == '\0')
        {
            out.append(start);
            break;
        }
        ++p;
        std::string wp = spec + "*.*";
        switch (conv)
        {
        case 'd':
        case 'i':
        case 'u':
        case 'o':
        case 'x':
        case 'X':
        {
            std::string s = wp + (size == LongLong ? "ll" : size == Long ? "l" : size == Short ? "h" : "") + conv;
            if (size == LongLong)
                AppendOne(out, s, width, precision, va_arg(args, long long));
            else if (size == Long)
                AppendOne(out, s, width, precision, va_arg(args, long));
            else
                AppendOne(out, s, width, precision, va_arg(args, int));
            break;
        }
        case 'e':
        case 'E':
        case 'f':
        case 'F':
        case 'g':
        case 'G':
        case 'a':
        case 'A':
            if (size == LongDouble)
                AppendOne(out, wp + 'L' + conv, width, precision, va_arg(args, long double));
            else
                AppendOne(out, wp + conv, width, precision, va_arg(args, double));
            break;
        case 'c':
        case 'C':
            if (conv == 'C' || size == Long)
            {
                wchar_t w = static_cast<wchar_t>(va_arg(args, wint_t));
                std::string local = Utf16ToLocal(&w, 1);
                AppendOne(out, spec + "*.*s", width, precision, local.c_str());
            }
            else
                AppendOne(out, spec + "*c", width, va_arg(args, int));
            break;
        case 's':
        case 'S':
            if (conv == 'S' || size == Long)
            {
                wchar_t const *w = va_arg(args, wchar_t const *);
                if (w == nullptr)
                    AppendOne(out, spec + "*.*s", width, precision, "(null)");
                else
                {
                    std::string local = Utf16ToLocal(w, static_cast<unsigned>(std::wcslen(w)));
                    AppendOne(out, spec + "*.*s", width, precision, local.c_str());
                }
            }
            else
            {
                char const *s = va_arg(args, char const *);
                AppendOne(out, spec + "*.*s", width, precision, s ? s : "(null)");
            }
            break;
        case 'p':
            AppendOne(out, spec + "*p", width, va_arg(args, void *));
            break;
        case 'n':
            (void)va_arg(args, void *);
            break;
        default:
            out.append(start, static_cast<std::size_t>(p - start));
            break;
        }
    }
    va_end(args);
    return out;
}

} // namespace MxXmlLib
