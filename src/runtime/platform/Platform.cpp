#include "runtime/platform/Platform.h"

#include "runtime/Utf8Codec.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iconv.h>
#include <pthread.h>
#include <sys/time.h>
#include <time.h>

namespace MxXmlLib
{
namespace Platform
{

static_assert(sizeof(wchar_t) == 4, "wide text is taken as UTF-32");

// ---------------------------------------------------------------------------
// Mutex

void MutexInit(void *storage, std::size_t size)
{
    static_assert(sizeof(pthread_mutex_t) <= 48, "CMXCriticalSection storage too small");
    (void)size;
    pthread_mutexattr_t attr;
    pthread_mutexattr_init(&attr);
    pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(static_cast<pthread_mutex_t *>(storage), &attr);
    pthread_mutexattr_destroy(&attr);
}

void MutexDestroy(void *storage)
{
    pthread_mutex_destroy(static_cast<pthread_mutex_t *>(storage));
}

void MutexLock(void *storage)
{
    pthread_mutex_lock(static_cast<pthread_mutex_t *>(storage));
}

void MutexUnlock(void *storage)
{
    pthread_mutex_unlock(static_cast<pthread_mutex_t *>(storage));
}

// ---------------------------------------------------------------------------
// Text conversion

namespace
{

constexpr wchar_t kReplacement = 0xFFFD;

// The printable characters of Windows-1252 at 0x80..0x9F; 0 marks the five
// holes, which decode to U+FFFD.
constexpr char16_t kCp1252High[32] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

enum class Charset
{
    Utf8,
    Ascii,
    Latin1,
    Cp1252,
    Iconv
};

Charset CharsetOf(unsigned codePage, std::string &iconvName)
{
    switch (codePage)
    {
    case 0: // the ANSI, OEM, Mac and thread code pages all mean the system's
    case 1: // own encoding, which is UTF-8 here
    case 2:
    case 3:
    case CodePageUtf8:
        return Charset::Utf8;
    case 20127:
        return Charset::Ascii;
    case 28591:
        return Charset::Latin1;
    case 1252:
        return Charset::Cp1252;
    default:
        break;
    }
    if (codePage >= 28592 && codePage <= 28605)
        iconvName = "ISO-8859-" + std::to_string(codePage - 28590);
    else if (codePage == 1200)
        iconvName = "UTF-16LE";
    else if (codePage == 1201)
        iconvName = "UTF-16BE";
    else
        iconvName = "CP" + std::to_string(codePage);
    return Charset::Iconv;
}

struct IconvHolder
{
    iconv_t cd;
    IconvHolder(char const *to, char const *from) : cd(iconv_open(to, from)) {}
    ~IconvHolder()
    {
        if (cd != reinterpret_cast<iconv_t>(-1))
            iconv_close(cd);
    }
    bool Ok() const { return cd != reinterpret_cast<iconv_t>(-1); }
};

// Runs iconv over the whole input; on a sequence it cannot convert it emits
// `replacement` (if any) and skips `skip` input bytes.
bool RunIconv(IconvHolder &h, char const *in, std::size_t inLength, std::string &out, char const *replacement,
              std::size_t replacementLength, std::size_t skip)
{
    out.clear();
    char *src = const_cast<char *>(in);
    std::size_t srcLeft = inLength;
    char buffer[1024];
    while (srcLeft > 0)
    {
        char *dst = buffer;
        std::size_t dstLeft = sizeof(buffer);
        std::size_t r = iconv(h.cd, &src, &srcLeft, &dst, &dstLeft);
        out.append(buffer, sizeof(buffer) - dstLeft);
        if (r == static_cast<std::size_t>(-1))
        {
            if (errno == E2BIG)
                continue;
            // EILSEQ or EINVAL: an unconvertible or truncated sequence.
            out.append(replacement, replacementLength);
            std::size_t step = skip < srcLeft ? skip : srcLeft;
            src += step;
            srcLeft -= step;
        }
    }
    char *dst = buffer;
    std::size_t dstLeft = sizeof(buffer);
    iconv(h.cd, nullptr, nullptr, &dst, &dstLeft);
    out.append(buffer, sizeof(buffer) - dstLeft);
    return true;
}

} // namespace

bool DecodeToWide(unsigned codePage, char const *text, std::size_t length, std::wstring &out)
{
    auto const *p = reinterpret_cast<unsigned char const *>(text);
    std::string iconvName;
    switch (CharsetOf(codePage, iconvName))
    {
    case Charset::Utf8:
        Utf8::DecodeToWide(p, length, out);
        return true;
    case Charset::Ascii:
    case Charset::Latin1:
        out.assign(p, p + length);
        return true;
    case Charset::Cp1252:
        out.resize(length);
        for (std::size_t i = 0; i < length; ++i)
        {
            unsigned c = p[i];
            if (c >= 0x80 && c < 0xA0)
                out[i] = kCp1252High[c - 0x80] ? kCp1252High[c - 0x80] : kReplacement;
            else
                out[i] = static_cast<wchar_t>(c);
        }
        return true;
    case Charset::Iconv:
        break;
    }
    IconvHolder h("WCHAR_T", iconvName.c_str());
    if (!h.Ok())
        return false;
    std::string bytes;
    wchar_t const repl = kReplacement;
    RunIconv(h, text, length, bytes, reinterpret_cast<char const *>(&repl), sizeof(repl), 1);
    out.assign(reinterpret_cast<wchar_t const *>(bytes.data()), bytes.size() / sizeof(wchar_t));
    return true;
}

bool EncodeFromWide(unsigned codePage, wchar_t const *text, std::size_t length, std::string &out)
{
    std::string iconvName;
    switch (CharsetOf(codePage, iconvName))
    {
    case Charset::Utf8:
        Utf8::EncodeFromWide(text, length, out);
        return true;
    case Charset::Ascii:
    case Charset::Latin1:
    {
        unsigned const limit = codePage == 20127 ? 0x80 : 0x100;
        out.resize(length);
        for (std::size_t i = 0; i < length; ++i)
        {
            auto c = static_cast<unsigned>(text[i]);
            out[i] = c < limit ? static_cast<char>(c) : '?';
        }
        return true;
    }
    case Charset::Cp1252:
        out.resize(length);
        for (std::size_t i = 0; i < length; ++i)
        {
            auto c = static_cast<unsigned>(text[i]);
            char b = '?';
            if (c < 0x80 || (c >= 0xA0 && c < 0x100))
                b = static_cast<char>(c);
            else
                for (unsigned k = 0; k < 32; ++k)
                    if (kCp1252High[k] && kCp1252High[k] == c)
                    {
                        b = static_cast<char>(0x80 + k);
                        break;
                    }
            out[i] = b;
        }
        return true;
    case Charset::Iconv:
        break;
    }
    IconvHolder h(iconvName.c_str(), "WCHAR_T");
    if (!h.Ok())
        return false;
    RunIconv(h, reinterpret_cast<char const *>(text), length * sizeof(wchar_t), out, "?", 1, sizeof(wchar_t));
    return true;
}

// ---------------------------------------------------------------------------
// Clock

LocalTime LocalTimeNow()
{
    timespec ts{};
    clock_gettime(CLOCK_REALTIME, &ts);
    tm parts{};
    time_t seconds = ts.tv_sec;
    localtime_r(&seconds, &parts);
    LocalTime t{};
    t.year = parts.tm_year + 1900;
    t.month = parts.tm_mon + 1;
    t.dayOfWeek = parts.tm_wday;
    t.day = parts.tm_mday;
    t.hour = parts.tm_hour;
    t.minute = parts.tm_min;
    t.second = parts.tm_sec > 59 ? 59 : parts.tm_sec;
    t.milliseconds = static_cast<int>(ts.tv_nsec / 1000000);
    return t;
}

int LocalUtcOffsetMinutes()
{
    time_t now = time(nullptr);
    tm parts{};
    localtime_r(&now, &parts);
    return static_cast<int>(parts.tm_gmtoff / 60);
}

// ---------------------------------------------------------------------------
// Notification

void ShowWarning(char const *title, char const *text)
{
    std::fprintf(stderr, "%s: %s\n", title ? title : "", text ? text : "");
    std::fflush(stderr);
}

} // namespace Platform
} // namespace MxXmlLib
