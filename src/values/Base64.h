#pragma once

// The base64 codec behind CBinaryData's text form: standard alphabet, '='
// padding, no line breaks. One instance serves one call.

#include <cstddef>
#include <string>

namespace MxXmlLib
{

class CBase64
{
public:
    // `input` is borrowed and must outlive the call.
    CBase64(void const *input, std::size_t length);
    CBase64(CBase64 const &) = delete;
    CBase64 &operator=(CBase64 const &) = delete;
    virtual ~CBase64();

    // Four characters for every three bytes begun.
    std::string Encode();
    // Writes the bytes into `output`, which holds at least the input length,
    // and returns their count. Blanks, TAB, LF, CR and '=' are skipped
    // wherever they stand; a byte reads as itself masked with 127. Any other
    // character gives 0, without an exception.
    std::size_t Decode(unsigned char *output);

private:
    std::size_t m_length;
    int m_bits;             // bits held in m_accumulator, [0, 12)
    unsigned m_accumulator; // only its low m_bits count
    unsigned char const *m_input;
};

} // namespace MxXmlLib
