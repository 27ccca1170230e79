#pragma once

#include "values/PrimitiveRestrictions.h"
#include "values/Variant.h"

namespace MxXmlLib
{

// Applies the facets to a value of the given type; raises CMxException naming
// `name` (the element or attribute) at the first facet that fails.
void CheckPrimitiveFacets(char const *name, MxVariant const &value, ItemType type,
                          CPrimitiveRestrictions const &facets);

} // namespace MxXmlLib
