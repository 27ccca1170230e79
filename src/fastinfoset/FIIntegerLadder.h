#pragma once

// The integer forms of Fast Infoset that the reader and the writer walk as
// rows of one table each. Internal.
//
// Integers that begin on the third or the fourth bit of an octet
// (element-name indexes; character-chunk indexes) are ladders of four rungs,
// one to four octets, told apart by tag bits:
//
//   rung 1: the start bit clear, value - 1 in the bits below it
//   rung 2: tag `twoOctets`, value - twoBase in the low bits and one octet
//   rung 3: tag `threeOctets`, value - threeBase in the low bits and two octets
//   rung 4: tag `fourOctets`, value - fourBase in the low nibble of three octets
//
// Lengths of non-empty octet strings, on the second, fifth or seventh bit,
// have three forms: the start bit clear and length - 1 in the bits below
// it; tag `oneOctet` and length - oneBase in the next octet; tag
// `fourOctets` and length - fourBase in the next four.
//
// An encoded character string on the third or fifth bit opens with two bits
// of its kind (UTF-8, UTF-16, restricted alphabet, algorithm); for the last
// two the table number - 1 follows, split between the low bits of this octet
// and the high bits of the next, which then opens the length.

#include <cstdint>

namespace MxXmlLib
{

struct FIIntegerLadder
{
    unsigned char startBit;   // clear for rung 1
    unsigned char formMask;   // the bits that tell rungs 2 and 3 apart
    unsigned char twoOctets;  // rung 2's tag under formMask
    unsigned char threeOctets; // rung 3's tag under formMask
    unsigned char fourMask;   // the bits that name rung 4
    unsigned char fourOctets; // its tag under fourMask
    std::uint32_t twoBase, threeBase, fourBase; // the smallest value of rungs 2 to 4
    // What the writer subtracts on rung 4: one less than the reader adds back
    // on the third bit, reached only past half a million names and kept so
    // that old documents read the same.
    std::uint32_t fourWriteBase;
    char const *failure; // the reader's message for an octet that fits no rung
};

constexpr FIIntegerLadder kIntegerOnBit3 = {
    0x20, 0x38, 0x20, 0x28, 0x3F, 0x30, 33, 2081, 526369, 526368,
    "Failed to parse FastInfoset. Invalid Encoding of integers 1 To 2^20 type  on the third bit of an octet."};
constexpr FIIntegerLadder kIntegerOnBit4 = {
    0x10, 0x1C, 0x10, 0x14, 0x1F, 0x18, 17, 1041, 263185, 263185,
    "Failed to parse FastInfoset. Invalid Encoding of integers 1 To 2^20 type  on the fourth bit of an octet."};

struct FILengthForm
{
    unsigned char startBit;   // clear for the one-octet form
    unsigned char formMask;   // the bits that tell the two longer forms apart
    unsigned char oneOctet;   // the tag of a length in the next octet
    unsigned char fourOctets; // the tag of a length in the next four
    std::uint32_t oneBase, fourBase; // the smallest length of those two forms
    char const *failure; // the reader's message for an octet that fits no form
};

constexpr FILengthForm kLengthOnBit2 = {
    0x40, 0x7F, 0x40, 0x60, 65, 321,
    "Failed to parse FastInfoset. Invalid NonEmptyOctetString type  on the second bit of an octet."};
constexpr FILengthForm kLengthOnBit5 = {
    0x08, 0x0F, 0x08, 0x0C, 9, 265,
    "Failed to parse FastInfoset. Invalid NonEmptyOctetString type  on the fifth bit of an octet."};
// Two bits hold every form: no octet fails.
constexpr FILengthForm kLengthOnBit7 = {0x02, 0x03, 0x02, 0x03, 3, 259, ""};

struct FIStringForm
{
    unsigned kindShift;          // where the two bits of the kind sit: 4 on the third bit, 2 on the fifth
    FILengthForm const *length;  // the form of its length
    char const *unknownEncoding; // the writer's message for an encoding of no kind
};

// Attribute values and other strings on the third bit; character chunks on the fifth.
constexpr FIStringForm kStringOnBit3 = {4, &kLengthOnBit5,
                                        "Failed to write FastInfoset. Unknown encoding in EncodedCharacterStringBit5."};
constexpr FIStringForm kStringOnBit5 = {2, &kLengthOnBit7,
                                        "Failed to write FastInfoset. Unknown encoding in EncodedCharacterStringBit7."};

} // namespace MxXmlLib
