#pragma once

#include "values/PrimitiveRestrictions.h"
#include "values/XsdPattern.h"
#include "values/Variant.h"

namespace MxXmlLib
{

// Applies the facets that `type` has to the value the cell holds, in a fixed
// order per type; the first that fails raises CMxException "Invalid Value for
// <name> [<value>]..." (the numeric types without the closing period). Bounds
// are parsed afresh under the collapse rule, and a bound that will not parse
// raises its parser's error. Dates and durations pass a bound they compare
// indeterminate with. `pattern` applies to strings only and `fractionDigits`
// to decimals only; boolean passes always, and char or any other type raises
// CMxInvalidValueException "Unknown type [<name>].".
void CheckPrimitiveFacets(char const *name, MxVariant const &value, ItemType type,
                          CPrimitiveRestrictions const &facets);
// The same, with the pattern taken compiled from `pattern` when it is not
// null (see CSerializationContext::SetReuseCompiledPatterns).
void CheckPrimitiveFacets(char const *name, MxVariant const &value, ItemType type,
                          CPrimitiveRestrictions const &facets, CCompiledPatternSlot const *pattern);

} // namespace MxXmlLib
