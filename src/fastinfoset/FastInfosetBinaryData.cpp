#include "fastinfoset/FastInfosetBinaryData.h"

#include "runtime/MxException.h"
#include "values/Conversions.h"

#include <cstdint>
#include <cstring>

namespace MxXmlLib
{

namespace
{
constexpr auto kRule = CWhitespaceUtils::WhitespaceRule::Collapse;

std::uint64_t ReadBigEndian(unsigned char const *octets, int count)
{
    std::uint64_t value = 0;
    for (int i = 0; i < count; ++i)
        value = (value << 8) | octets[i];
    return value;
}

void AppendBigEndian(CBinaryData &data, std::uint64_t value, int count)
{
    unsigned char octets[8];
    for (int i = count - 1; i >= 0; --i, value >>= 8)
        octets[i] = static_cast<unsigned char>(value & 0xFF);
    data.Append(octets, static_cast<unsigned long>(count));
}

template <typename T, typename U> T BitCast(U from)
{
    static_assert(sizeof(T) == sizeof(U), "same size");
    T to;
    std::memcpy(&to, &from, sizeof(to));
    return to;
}

// Fixed-size groups, each turned into text by `toText`, joined by blanks.
template <typename ToText>
std::string Groups(unsigned char const *data, unsigned long length, unsigned long size, char const *message,
                   ToText toText)
{
    if (length % size != 0)
        throw CMxException(message);
    std::string text;
    for (unsigned long at = 0; at < length; at += size)
    {
        if (at)
            text += ' ';
        text += toText(data + at);
    }
    return text;
}

// The first octet gives its bits 3 to 0, every further octet its bits 7 to
// 0; the last one stops above its U unused low bits, U being the first
// octet's high nibble. Bits of one octet run together; octets are separated
// by a blank.
std::string BooleansText(unsigned char const *data, unsigned long length)
{
    unsigned const unused = data[0] >> 4; // [0, 15]
    std::string text;
    for (unsigned long i = 0; i < length; ++i)
    {
        int const high = i == 0 ? 3 : 7;
        int const low = i + 1 == length ? static_cast<int>(unused) : 0;
        if (i)
            text += ' ';
        for (int bit = high; bit >= low; --bit)
            text += CConversions::booleanToString((data[i] >> bit) & 1);
    }
    return text;
}
} // namespace

void CFastInfosetBinaryData::SetAsEncodedString(unsigned long algorithm, char const *text)
{
    Clear();
    std::string const value = text ? text : "";
    switch (algorithm)
    {
    case 1:
    case 9:
        SetAsHexString(value);
        return;
    case 2:
        SetAsBase64(value);
        return;
    case 3:
        AppendBigEndian(*this, static_cast<std::uint16_t>(CConversions::i2FromString(value, kRule)), 2);
        return;
    case 4:
        AppendBigEndian(*this, static_cast<std::uint32_t>(CConversions::i4FromString(value, kRule)), 4);
        return;
    case 5:
        AppendBigEndian(*this, static_cast<std::uint64_t>(CConversions::i8FromString(value, kRule)), 8);
        return;
    case 6:
        // High nibble 3: three unused low bits; bit 3 holds the value.
        Append(static_cast<char>(CConversions::booleanFromString(value, kRule) ? 0x38 : 0x30));
        return;
    case 7:
        AppendBigEndian(*this, BitCast<std::uint32_t>(CConversions::r4FromString(value, kRule)), 4);
        return;
    case 8:
        AppendBigEndian(*this, BitCast<std::uint64_t>(CConversions::r8FromString(value, kRule)), 8);
        return;
    case 10: {
        CBinaryData const utf8 = LocalToUtf8(value.c_str());
        Append(utf8);
        return;
    }
    default:
        throw CMxException("Unknown byte encoding.");
    }
}

std::string CFastInfosetBinaryData::GetAsString(unsigned long algorithm) const
{
    unsigned char const *data = GetData();
    unsigned long const length = GetLength();
    if (data == nullptr || length == 0)
        return std::string();
    switch (algorithm)
    {
    case 1:
        return GetAsHexString();
    case 2:
        return GetAsBase64();
    case 3:
        return Groups(data, length, 2, "Invalid value for SHORT byte encoding.", [](unsigned char const *p) {
            return CConversions::i2ToString(static_cast<std::int16_t>(ReadBigEndian(p, 2)));
        });
    case 4:
        return Groups(data, length, 4, "Invalid value for INT byte encoding.", [](unsigned char const *p) {
            return CConversions::i4ToString(static_cast<std::int32_t>(ReadBigEndian(p, 4)));
        });
    case 5:
        return Groups(data, length, 8, "Invalid value for LONG byte encoding.", [](unsigned char const *p) {
            return CConversions::i8ToString(static_cast<std::int64_t>(ReadBigEndian(p, 8)));
        });
    case 6:
        return BooleansText(data, length);
    case 7:
        // Only the first octet of each group counts, copied into all four
        // bytes of the pattern: documents written before have been read so.
        return Groups(data, length, 4, "Invalid value for FLOAT byte encoding.", [](unsigned char const *p) {
            std::uint32_t const pattern = 0x01010101u * p[0];
            return CConversions::r4ToString(BitCast<float>(pattern), "");
        });
    case 8:
        return Groups(data, length, 8, "Invalid value for DOUBLE byte encoding.", [](unsigned char const *p) {
            return CConversions::r8ToString(BitCast<double>(ReadBigEndian(p, 8)), "");
        });
    case 9:
        return Groups(data, length, 16, "Invalid value for UUID byte encoding.", [](unsigned char const *p) {
            return CBinaryData::GetAsHexString(p, 16);
        });
    default:
        throw CMxException("Unknown byte encoding.");
    }
}

} // namespace MxXmlLib
