#pragma once

// CDateTimeSpan: the value of xs:duration. Each unit keeps its own count and
// nothing normalises them (PT90M stays 90 minutes); one sign covers all.

#include "values/DateTime.h"

#include <cstdint>
#include <string>

namespace MxXmlLib
{

class CDateTimeSpan
{
public:
    CDateTimeSpan();
    CDateTimeSpan(CDateTimeSpan const &other) = default;
    CDateTimeSpan(std::uint32_t hours, std::uint64_t minutes, std::uint64_t seconds);
    CDateTimeSpan(std::uint16_t years, std::uint32_t months, std::uint32_t days, std::uint32_t hours,
                  std::uint64_t minutes, std::uint64_t seconds);
    CDateTimeSpan(std::uint16_t years, std::uint32_t months, std::uint32_t days, std::uint32_t hours,
                  std::uint64_t minutes, std::uint64_t seconds, std::uint16_t milli, std::uint16_t micro,
                  std::uint16_t nano);
    virtual ~CDateTimeSpan();

    CDateTimeSpan &operator=(CDateTimeSpan const &other) = default;

    // Each form sets the fields it does not name to 0 and the sign positive.
    void SetDateTimeSpan(std::uint32_t hours, std::uint64_t minutes, std::uint64_t seconds);
    void SetDateTimeSpan(std::uint16_t years, std::uint32_t months, std::uint32_t days, std::uint32_t hours,
                         std::uint64_t minutes, std::uint64_t seconds);
    void SetDateTimeSpan(std::uint16_t years, std::uint32_t months, std::uint32_t days, std::uint32_t hours,
                         std::uint64_t minutes, std::uint64_t seconds, std::uint16_t milli, std::uint16_t micro,
                         std::uint16_t nano);

    std::uint16_t GetYears() const { return years; }
    std::uint32_t GetMonths() const { return months; }
    std::uint32_t GetDays() const { return days; }
    std::uint32_t GetHours() const { return hours; }
    std::uint64_t GetMinutes() const { return minutes; }
    std::uint64_t GetSeconds() const { return seconds; }
    std::uint16_t GetMilliSeconds() const { return milliSeconds; }
    std::uint16_t GetMicroSeconds() const { return microSeconds; }
    std::uint16_t GetNanoSeconds() const { return nanoSeconds; }
    // The setters store without any check.
    void SetYears(std::uint16_t value) { years = value; }
    void SetMonths(std::uint32_t value) { months = value; }
    void SetDays(std::uint32_t value) { days = value; }
    void SetHours(std::uint32_t value) { hours = value; }
    void SetMinutes(std::uint64_t value) { minutes = value; }
    void SetSeconds(std::uint64_t value) { seconds = value; }
    void SetMilliSeconds(std::uint16_t value) { milliSeconds = value; }
    void SetMicroSeconds(std::uint16_t value) { microSeconds = value; }
    void SetNanoSeconds(std::uint16_t value) { nanoSeconds = value; }

    bool IsNegative() const { return negative; }
    void Negate() { negative = !negative; }
    // A copy with the sign set negative; a negative span stays negative.
    CDateTimeSpan GetAsNegative() const;

    // "[-]P[nY][nM][nD][T[nH][nM][nS.fff]]"; the zero span prints as "P".
    std::string ToString() const;
    // Clears the value first; throws CMxInvalidValueException. Counts wrap at
    // 32 bits without error, minutes and seconds are sign-extended from them.
    void ParseXSDDuration(char const *text);

    // The XSD partial order: both spans are added to 1696-09-01, 1697-02-01,
    // 1903-03-01 and 1903-07-01; the four results must agree, else
    // DTIndeterminate. Only whole days count (PT1H equals PT2H).
    CDateTime::DTCompareResult CompareTo(CDateTimeSpan const &other) const;

    bool operator==(CDateTimeSpan const &other) const { return CompareTo(other) == CDateTime::DTEqual; }
    bool operator!=(CDateTimeSpan const &other) const { return CompareTo(other) != CDateTime::DTEqual; }
    bool operator<(CDateTimeSpan const &other) const { return CompareTo(other) == CDateTime::DTLessThan; }
    bool operator>(CDateTimeSpan const &other) const { return CompareTo(other) == CDateTime::DTGreaterThan; }

private:
    std::uint16_t years;
    std::uint32_t months;
    std::uint32_t days;
    std::uint32_t hours;
    std::uint64_t minutes;
    std::uint64_t seconds;
    std::uint16_t milliSeconds;
    std::uint16_t microSeconds;
    std::uint16_t nanoSeconds;
    bool negative;
};

} // namespace MxXmlLib
