#pragma once

// Internal to CDateTime: the day walk of span addition, kept apart so that
// its fast form can be checked against the plain one. Not part of the public
// interface.

namespace MxXmlLib
{
namespace DateTimeCalendar
{

// Month may hold any value: 0 and 13 wrap into the 16-bit year (decrementing
// or incrementing it), others outside [1, 12] are read modulo 12 for their
// length and leave the year alone. Day is the day of that month.
struct DayWalk
{
    long long month;
    long long day;
    short year;
};

// Moves by `days` (either sign) one month at a time.
void WalkByMonths(DayWalk &walk, long long days);
// The same result, but whole 400-year cycles (12-month runs for months
// outside [1, 12]) are taken in one step where the walk provably repeats.
void Walk(DayWalk &walk, long long days);

} // namespace DateTimeCalendar
} // namespace MxXmlLib
