#include "metadata/ElementInfoAll.h"

#include "binding/XmlGeneratedClass.h"
#include "document/XmlDocument.h"
#include "metadata/ElementRowSteps.h"

namespace MxXmlLibData
{

using namespace MxXmlLib;
using namespace RowSteps;

// ---------------------------------------------------------------------------
// Collections

// Never satisfied, so it keeps seeing the elements; no count is checked.
bool CElementInfoAllCol::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                        CXmlElement *parent, CXmlElement **current, char const *, XmlElementType)
{
    *current = ReadItems(context, object, parent, *current);
    return false;
}

CElementInfoAllEnumCol::CElementInfoAllEnumCol(char const *name, char const *elementNamespace, int propertyIndex)
    : CElementInfo(name, elementNamespace, propertyIndex)
{
}

// ---------------------------------------------------------------------------
// Classes

CElementInfoAllAbsClsMnd::CElementInfoAllAbsClsMnd(char const *name, char const *elementNamespace,
                                                   int propertyIndex, XmlElementType elementType,
                                                   CClassfactoryBase::FactoryByElement factory, int unused)
    : CElementInfoMandatory(name, elementNamespace, propertyIndex, elementType, factory), m_unused(unused)
{
}

// A real child must carry the row's name before the factory is asked; an
// inline one is the factory's to judge, whatever stands at the cursor (null
// included). A factory that finds no class leaves the row unsatisfied.
bool CElementInfoAllAbsClsMnd::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                              CXmlElement *parent, CXmlElement **current, char const *,
                                              XmlElementType)
{
    bool const own = m_elementType == XmlElementType_Element;
    return (!own || IsThisElement(context, *current)) && ReadAndStoreMade(context, object, parent, current, own);
}

// As the mandatory row, except that an inline form needs an element.
bool CElementInfoAllAbsClsOpt::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                              CXmlElement *parent, CXmlElement **current, char const *,
                                              XmlElementType)
{
    return MayStartAt(context, *current) &&
           ReadAndStoreMade(context, object, parent, current, m_elementType == XmlElementType_Element);
}

bool CElementInfoAllClsMnd::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                           CXmlElement *parent, CXmlElement **current, char const *, XmlElementType)
{
    bool const own = m_elementType == XmlElementType_Element;
    if (own && !IsThisElement(context, *current))
        return false;
    CXmlElement *const at = *current;
    *current = ReadChild(context, parent, at, HeldChild(object), own);
    return own || *current != at;
}

// The child object exists from the start, so a missing real child is no
// loss unless it is a pseudo element or its content is required.
bool CElementInfoAllClsMnd::Validate(CSerializationContext const &context, CXmlGeneratedClass const *object,
                                     bool found, bool isRealElement) const
{
    if (!found && isRealElement && m_elementType != XmlElementType_PseudoElement && !m_contentRequired)
        return true;
    return CElementInfoMandatory::Validate(context, object, found, isRealElement);
}

bool CElementInfoAllClsOpt::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                           CXmlElement *parent, CXmlElement **current, char const *, XmlElementType)
{
    return MayStartAt(context, *current) &&
           ReadAndStoreChild(context, object, parent, current, MakeChild(), m_elementType == XmlElementType_Element);
}

// ---------------------------------------------------------------------------
// xs:any

bool CElementInfoAllUntpdMnd::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                             CXmlElement *parent, CXmlElement **current, char const *,
                                             XmlElementType)
{
    return *current != nullptr && ReadIntoHeld(context, object, parent, current);
}

bool CElementInfoAllUntpdOpt::ElementFromXml(CSerializationContext const &context, CXmlGeneratedClass *object,
                                             CXmlElement *parent, CXmlElement **current,
                                             char const *classNamespace, XmlElementType)
{
    return *current != nullptr && ReadAndStoreNew(context, object, parent, current, classNamespace);
}

} // namespace MxXmlLibData
