#pragma once

// The built-in encoding algorithms of Fast Infoset: the text form of one
// primitive value to the octets of an algorithm, and octets back to text.
// Algorithms are the 1-based numbers of X.891: 1 hexadecimal, 2 base64,
// 3 short, 4 int, 5 long, 6 boolean, 7 float, 8 double, 9 uuid, 10 cdata.

#include "values/BinaryData.h"

#include <string>

namespace MxXmlLib
{

class CFastInfosetBinaryData : public CBinaryData
{
public:
    CFastInfosetBinaryData() = default;
    CFastInfosetBinaryData(CFastInfosetBinaryData const &other) = default;
    CFastInfosetBinaryData(CBinaryData const &other) : CBinaryData(other) {}
    CFastInfosetBinaryData(unsigned char *const data, unsigned long length, bool takeOwnership)
        : CBinaryData(data, length, takeOwnership)
    {
    }
    CFastInfosetBinaryData(char const *text) : CBinaryData(text) {}
    CFastInfosetBinaryData &operator=(CFastInfosetBinaryData const &other) = default;
    CFastInfosetBinaryData &operator=(CBinaryData const &other)
    {
        CBinaryData::operator=(other);
        return *this;
    }

    // Clears, then encodes exactly one value. Algorithm 10 (cdata) takes the
    // text as UTF-8; others raise "Unknown byte encoding.". Conversion
    // failures pass through unchanged.
    void SetAsEncodedString(unsigned long algorithm, char const *text);
    // The held octets as text, values separated by one blank. An empty
    // object gives "" for any number; otherwise a size that does not divide
    // into values raises, and 10 (read as text by the reader) and unknown
    // numbers raise "Unknown byte encoding.". A float is rebuilt from the
    // first octet of its four alone, as the format has always been read.
    std::string GetAsString(unsigned long algorithm) const;
};

} // namespace MxXmlLib
