#pragma once

// The one place that talks to the operating system. Each call is a task the
// library needs (lock, convert text, read the clock; files are NativeFile's),
// not a wrapper for a system call. No system header appears here.

#include <cstddef>
#include <cstdint>
#include <string>

namespace MxXmlLib
{
namespace Platform
{

// Code-page numbers keep their Windows meaning so that settings carry over.
constexpr unsigned CodePageAcp = 0;
constexpr unsigned CodePageThreadAcp = 3;
constexpr unsigned CodePageUtf8 = 65001;
// The local encoding of a process that never sets one.
constexpr unsigned DefaultLocalCodePage = CodePageUtf8;

// --- recursive mutex in caller-provided storage --------------------------
void MutexInit(void *storage, std::size_t size);
void MutexDestroy(void *storage);
void MutexLock(void *storage);
void MutexUnlock(void *storage);

// --- text in a code page <-> wide text (UTF-32, wchar_t is 32 bits) ---------
// Decoding replaces malformed input by U+FFFD; encoding replaces characters
// the code page cannot show by '?'. Both return false, with nothing written,
// when the code page is unknown.
bool DecodeToWide(unsigned codePage, char const *text, std::size_t length, std::wstring &out);
bool EncodeFromWide(unsigned codePage, wchar_t const *text, std::size_t length, std::string &out);

// --- clock -------------------------------------------------------------------
struct LocalTime
{
    int year;         // e.g. 2026
    int month;        // [1, 12]
    int dayOfWeek;    // [0, 6], 0 is Sunday
    int day;          // [1, 31]
    int hour;         // [0, 23]
    int minute;       // [0, 59]
    int second;       // [0, 59]
    int milliseconds; // [0, 999]
};
LocalTime LocalTimeNow();
// Offset of local time from UTC in minutes at this moment (east positive).
int LocalUtcOffsetMinutes();

// --- user notification ------------------------------------------------------
// Stands in for a message box: the title and text go to standard error.
void ShowWarning(char const *title, char const *text);

} // namespace Platform
} // namespace MxXmlLib
