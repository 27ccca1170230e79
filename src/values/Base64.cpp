#include "values/Base64.h"

#include <array>

namespace MxXmlLib
{

namespace
{

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr signed char kSkip = -1;  // '=', blank, TAB, LF, CR
constexpr signed char kStray = -2; // anything else ends the decode

// Indexed by the raw byte: the high half repeats the low half, which is the
// same as masking each byte with 127 before the lookup.
constexpr std::array<signed char, 256> MakeDecodeTable()
{
    std::array<signed char, 256> table{};
    for (auto &entry : table)
        entry = kStray;
    for (int v = 0; v < 64; ++v)
        table[static_cast<unsigned char>(kAlphabet[v])] = static_cast<signed char>(v);
    for (unsigned char c : {'=', ' ', '\t', '\n', '\r'})
        table[c] = kSkip;
    for (int b = 128; b < 256; ++b)
        table[b] = table[b & 127];
    return table;
}

constexpr std::array<signed char, 256> kDecode = MakeDecodeTable();

} // namespace

CBase64::CBase64(void const *input, std::size_t length)
    : m_length(length), m_bits(0), m_accumulator(0), m_input(static_cast<unsigned char const *>(input))
{
}

CBase64::~CBase64() = default;

std::string CBase64::Encode()
{
    // 8 bits a byte in 6-bit characters, rounded up to whole groups of four;
    // the padding is what the characters do not overwrite.
    std::size_t const characters = (m_length * 8 + 5) / 6;
    std::string text((characters + 3) / 4 * 4, '=');
    char *out = text.empty() ? nullptr : &text[0];
    unsigned char const *in = m_input;
    std::size_t i = 0;
    // Whole groups of three bytes without the accumulator: the same bits,
    // fewer branches.
    for (; i + 3 <= m_length; i += 3, out += 4)
    {
        unsigned const v = static_cast<unsigned>(in[i]) << 16 | static_cast<unsigned>(in[i + 1]) << 8 | in[i + 2];
        out[0] = kAlphabet[v >> 18];
        out[1] = kAlphabet[(v >> 12) & 63];
        out[2] = kAlphabet[(v >> 6) & 63];
        out[3] = kAlphabet[v & 63];
    }
    for (; i < m_length; ++i)
    {
        m_accumulator = (m_accumulator << 8 | in[i]) & 0xFFFFu;
        m_bits += 8;
        while (m_bits >= 6)
        {
            m_bits -= 6;
            *out++ = kAlphabet[(m_accumulator >> m_bits) & 63];
        }
    }
    if (m_bits > 0)
        *out++ = kAlphabet[(m_accumulator << (6 - m_bits)) & 63];
    m_bits = 0;
    m_accumulator = 0;
    return text;
}

std::size_t CBase64::Decode(unsigned char *output)
{
    unsigned char const *in = m_input;
    unsigned char *out = output;
    std::size_t i = 0;
    while (i < m_length)
    {
        // Four alphabet characters on a byte boundary make three bytes at once.
        if (m_bits == 0 && i + 4 <= m_length)
        {
            int const a = kDecode[in[i]], b = kDecode[in[i + 1]], c = kDecode[in[i + 2]], d = kDecode[in[i + 3]];
            if ((a | b | c | d) >= 0)
            {
                unsigned const v = static_cast<unsigned>(a) << 18 | static_cast<unsigned>(b) << 12 |
                                   static_cast<unsigned>(c) << 6 | static_cast<unsigned>(d);
                out[0] = static_cast<unsigned char>(v >> 16);
                out[1] = static_cast<unsigned char>(v >> 8);
                out[2] = static_cast<unsigned char>(v);
                out += 3;
                i += 4;
                continue;
            }
        }
        int const value = kDecode[in[i++]];
        if (value == kStray)
        {
            m_bits = 0;
            m_accumulator = 0;
            return 0;
        }
        if (value == kSkip)
            continue;
        m_accumulator = (m_accumulator << 6 | static_cast<unsigned>(value)) & 0xFFFu;
        m_bits += 6;
        if (m_bits >= 8)
        {
            m_bits -= 8;
            *out++ = static_cast<unsigned char>(m_accumulator >> m_bits);
        }
    }
    m_bits = 0;
    m_accumulator = 0;
    return static_cast<std::size_t>(out - output);
}

} // namespace MxXmlLib
