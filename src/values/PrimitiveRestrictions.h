#pragma once

#include <string>

namespace MxXmlLib
{

// The XSD facets of one primitive, as a generated table states them. Bounds
// stay text, so that one record serves every type; the facet check parses
// them afresh for the type at hand. An empty string or -1 means "no facet".
class CPrimitiveRestrictions
{
public:
    // Only a target of assignment. The numbers are set to "none" although
    // nothing may read them, so that copying such a record is defined.
    CPrimitiveRestrictions()
        : minLength(-1), maxLength(-1), length(-1), totalDigits(-1), fractionDigits(-1)
    {
    }

    // Generated tables call this with literals; a null string is no facet.
    CPrimitiveRestrictions(char const *pattern_, long minLength_, long maxLength_, char const *minInclusive_,
                           char const *maxInclusive_, char const *minExclusive_, char const *maxExclusive_,
                           long length_, long totalDigits_, long fractionDigits_)
        : pattern(Text(pattern_)), minLength(static_cast<int>(minLength_)),
          maxLength(static_cast<int>(maxLength_)), minInclusive(Text(minInclusive_)),
          maxInclusive(Text(maxInclusive_)), minExclusive(Text(minExclusive_)),
          maxExclusive(Text(maxExclusive_)), length(static_cast<int>(length_)),
          totalDigits(static_cast<int>(totalDigits_)), fractionDigits(static_cast<int>(fractionDigits_))
    {
    }

    CPrimitiveRestrictions(CPrimitiveRestrictions const &) = default;
    CPrimitiveRestrictions &operator=(CPrimitiveRestrictions const &) = default;
    virtual ~CPrimitiveRestrictions() {}

    std::string pattern;
    int minLength;
    int maxLength;
    std::string minInclusive;
    std::string maxInclusive;
    std::string minExclusive;
    std::string maxExclusive;
    int length;
    int totalDigits;
    int fractionDigits;

private:
    static char const *Text(char const *s) { return s ? s : ""; }
};

} // namespace MxXmlLib
