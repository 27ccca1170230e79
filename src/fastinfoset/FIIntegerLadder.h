#pragma once

// The two integer forms of Fast Infoset that begin on the third or the
// fourth bit of an octet (element-name indexes; character-chunk indexes).
// Both are ladders of four rungs, one to four octets, told apart by tag bits:
//
//   rung 1: the start bit clear, value - 1 in the bits below it
//   rung 2: tag `twoOctets`, value - twoBase in the low bits and one octet
//   rung 3: tag `threeOctets`, value - threeBase in the low bits and two octets
//   rung 4: tag `fourOctets`, value - fourBase in the low nibble of three octets
//
// The reader and the writer walk the same rows. Internal.

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

} // namespace MxXmlLib
