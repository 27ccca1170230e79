// Feeds arbitrary bytes to the date, time and duration parsers. A text that
// parses must print, read back to the same print, and survive the calendar
// queries, comparison and span addition; a text that does not must end in
// CMxInvalidValueException. Two texts may be given, separated by a newline:
// the second is then compared with and added to the first.

#include "runtime/MxException.h"
#include "values/DateTime.h"
#include "values/DateTimeSpan.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

using namespace MxXmlLib;

namespace
{

enum Parser
{
    kDateTime,
    kDate,
    kTime
};

bool TryParse(CDateTime &v, Parser parser, char const *text)
{
    try
    {
        if (parser == kDateTime)
            v.ParseXSDDateTime(text);
        else if (parser == kDate)
            v.ParseXSDDate(text);
        else
            v.ParseXSDTime(text);
        return true;
    }
    catch (CMxInvalidValueException const &)
    {
        return false;
    }
}

void Exercise(CDateTime const &v, Parser parser)
{
    std::string const printed = v.ToString();
    CDateTime again;
    if (!TryParse(again, parser, printed.c_str()) || again.ToString() != printed)
        std::abort(); // what we print must read back
    if (v.CompareTo(again) != CDateTime::DTEqual)
        std::abort();
    v.GetNormalized().ToString();
    if (v.GetType() == CDateTime::dateTime || v.GetType() == CDateTime::date)
    {
        v.GetTime();
        int const weekday = v.GetDayOfWeek();
        if (weekday < 1 || weekday > 7)
            std::abort();
        v.GetDayOfYear();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size)
{
    std::string const input(reinterpret_cast<char const *>(data), size);
    std::string const first = input.substr(0, input.find('\n'));
    std::string const second = input.find('\n') == std::string::npos ? std::string() : input.substr(input.find('\n') + 1);
    char const *text = first.c_str(); // stops at an embedded zero byte, as a caller's text would

    CDateTime values[3];
    bool parsed[3];
    for (int p = 0; p < 3; ++p)
    {
        parsed[p] = TryParse(values[p], static_cast<Parser>(p), text);
        if (parsed[p])
            Exercise(values[p], static_cast<Parser>(p));
    }
    CDateTimeSpan span;
    bool spanParsed = false;
    try
    {
        span.ParseXSDDuration(text);
        span.ToString();
        span.CompareTo(CDateTimeSpan(0, 0, 1));
        spanParsed = true;
    }
    catch (CMxInvalidValueException const &)
    {
    }
    if (second.empty())
        return 0;

    CDateTime other[3];
    CDateTimeSpan otherSpan;
    bool otherSpanParsed = false;
    try
    {
        otherSpan.ParseXSDDuration(second.c_str());
        otherSpanParsed = true;
    }
    catch (CMxInvalidValueException const &)
    {
    }
    for (int p = 0; p < 3; ++p)
    {
        if (!TryParse(other[p], static_cast<Parser>(p), second.c_str()))
            continue;
        for (int q = 0; q < 3; ++q)
            if (parsed[q])
            {
                CDateTime::DTCompareResult const r = values[q].CompareTo(other[p]);
                if (r > CDateTime::DTIndeterminate)
                    std::abort();
            }
    }
    if (otherSpanParsed)
    {
        for (int q = 0; q < 3; ++q)
            if (parsed[q])
            {
                (values[q] + otherSpan).ToString();
                (values[q] - otherSpan).ToString();
            }
        if (spanParsed)
            span.CompareTo(otherSpan);
    }
    return 0;
}
