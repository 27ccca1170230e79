#include "values/FacetCheck.h"

namespace MxXmlLib
{

// The facets of the value types are checked once those types can be read as
// bounds; until then every value passes.
void CheckPrimitiveFacets(char const *, MxVariant const &, ItemType, CPrimitiveRestrictions const &) {}

} // namespace MxXmlLib
