// A user's file: it includes the umbrella header alone, compiled against the
// library's public include folder alone (no src/), and needs every exported
// class as a complete type. A class missing from the umbrella, or a public
// header that reaches an internal one, fails the build here.

#include "MxXmlLib.h"

#include <gtest/gtest.h>

namespace
{

// sizeof of an incomplete type does not compile.
template <typename... Classes> constexpr bool AllComplete()
{
    return ((sizeof(Classes) > 0) && ...);
}

static_assert(AllComplete<MxXmlLib::CMxException,
                          MxXmlLib::CMxValidationException,
                          MxXmlLib::CMxInvalidValueException,
                          MxXmlLib::CMxInvalidNamespaceException,
                          MxXmlLib::CMxInvalidStateException,
                          MxXmlLib::CMxInvalidParamException,
                          MxXmlLib::CMxOverFlowException,
                          MxXmlLib::CStringBuffer,
                          MxXmlLib::CTextStream,
                          MxXmlLib::CBinaryStream,
                          MxXmlLib::CFileBinaryStream,
                          MxXmlLib::CFileTextStream>(),
              "runtime");

static_assert(AllComplete<::CInstanceMonitor, ::CMXCriticalSection>(),
              "runtime, global");

static_assert(AllComplete<MxXmlLib::MxVariant,
                          MxXmlLib::CConversions,
                          MxXmlLib::CPrimitiveRestrictions,
                          MxXmlLib::CWhitespaceUtils,
                          MxXmlLib::CDateTime,
                          MxXmlLib::CDateTimeSpan,
                          MxXmlLib::CBigInteger,
                          MxXmlLib::CDecimal,
                          MxXmlLib::CBinaryData>(),
              "values");

static_assert(AllComplete<MxXmlLib::CXmlDocument,
                          MxXmlLib::CXmlElement,
                          MxXmlLib::CXmlAttribute,
                          MxXmlLib::CXmlTextWriter>(),
              "document");

static_assert(AllComplete<MxXmlLibData::CXmlElement,
                          MxXmlLibData::CXmlGeneratedClass,
                          MxXmlLibData::CXmlObjectBase,
                          MxXmlLibData::CXmlWriter,
                          MxXmlLibData::CParentElementInfo,
                          MxXmlLibData::CElementInfo,
                          MxXmlLibData::CElementInfoAllCol,
                          MxXmlLibData::CElementInfoAllAbsClsCol,
                          MxXmlLibData::CElementInfoAllClsCol,
                          MxXmlLibData::CElementInfoAllEnumCol,
                          MxXmlLibData::CElementInfoAllPrimCol,
                          MxXmlLibData::CElementInfoAllUntpdCol,
                          MxXmlLibData::CElementInfoAllAbsClsMnd,
                          MxXmlLibData::CElementInfoAllAbsClsOpt,
                          MxXmlLibData::CElementInfoAllClsMnd,
                          MxXmlLibData::CElementInfoAllClsOpt,
                          MxXmlLibData::CElementInfoAllEnumMnd,
                          MxXmlLibData::CElementInfoAllEnumOpt,
                          MxXmlLibData::CElementInfoAllPrimMnd,
                          MxXmlLibData::CElementInfoAllPrimOpt,
                          MxXmlLibData::CElementInfoAllUntpdMnd,
                          MxXmlLibData::CElementInfoAllUntpdOpt,
                          MxXmlLibData::CElementInfoChoiceCol,
                          MxXmlLibData::CElementInfoChoiceAbsClsCol,
                          MxXmlLibData::CElementInfoChoiceClsCol,
                          MxXmlLibData::CElementInfoChoiceEnumCol,
                          MxXmlLibData::CElementInfoChoicePrimCol,
                          MxXmlLibData::CElementInfoChoiceUntpdCol,
                          MxXmlLibData::CElementInfoChoiceAbsClsOpt,
                          MxXmlLibData::CElementInfoChoiceClsOpt,
                          MxXmlLibData::CElementInfoChoiceEnumOpt,
                          MxXmlLibData::CElementInfoChoicePrimOpt,
                          MxXmlLibData::CElementInfoChoiceUntpdOpt,
                          MxXmlLibData::CElementInfoSeqCol,
                          MxXmlLibData::CElementInfoSeqAbsClsCol,
                          MxXmlLibData::CElementInfoSeqClsCol,
                          MxXmlLibData::CElementInfoSeqEnumCol,
                          MxXmlLibData::CElementInfoSeqPrimCol,
                          MxXmlLibData::CElementInfoSeqUntpdCol,
                          MxXmlLibData::CElementInfoSeqAbsClsMnd,
                          MxXmlLibData::CElementInfoSeqAbsClsOpt,
                          MxXmlLibData::CElementInfoSeqClsMnd,
                          MxXmlLibData::CElementInfoSeqClsOpt,
                          MxXmlLibData::CElementInfoSeqEnumMnd,
                          MxXmlLibData::CElementInfoSeqEnumOpt,
                          MxXmlLibData::CElementInfoSeqPrimMnd,
                          MxXmlLibData::CElementInfoSeqPrimOpt,
                          MxXmlLibData::CElementInfoSeqUntpdMnd,
                          MxXmlLibData::CElementInfoSeqUntpdOpt,
                          MxXmlLibData::CXmlAttribute,
                          MxXmlLibData::CAttributeInfo,
                          MxXmlLibData::CAttributeInfoEnum,
                          MxXmlLibData::CAttributeInfoPrimitive,
                          MxXmlLibData::CAttributeInfoAny>(),
              "metadata");

static_assert(AllComplete<MxXmlLib::CClassfactoryBase,
                          MxXmlLib::CNamespaceAliasMap,
                          MxXmlLibData::CNamespaceRules>(),
              "metadata, factories and namespaces");

static_assert(AllComplete<MxXmlLib::CXmlCollectionBase,
                          MxXmlLib::CXmlCollection,
                          MxXmlLib::CXmlTypeCollection,
                          MxXmlLib::CAttribute,
                          MxXmlLib::CAttributeCol,
                          MxXmlLib::CElement,
                          MxXmlLib::CElementCol,
                          MxXmlLib::CObjectCol,
                          MxXmlLib::CEnumCol,
                          MxXmlLib::Ci1Col,
                          MxXmlLib::Ci2Col,
                          MxXmlLib::Ci4Col,
                          MxXmlLib::Ci8Col,
                          MxXmlLib::Cui1Col,
                          MxXmlLib::Cui2Col,
                          MxXmlLib::Cui4Col,
                          MxXmlLib::Cui8Col,
                          MxXmlLib::Cr4Col,
                          MxXmlLib::Cr8Col,
                          MxXmlLib::CstringCol,
                          MxXmlLib::CbooleanCol,
                          MxXmlLib::CdecimalCol,
                          MxXmlLib::CintegerCol,
                          MxXmlLib::CdurationCol,
                          MxXmlLib::Cbase64BinaryCol,
                          MxXmlLib::ChexBinaryCol,
                          MxXmlLib::CyearCol,
                          MxXmlLib::CmonthCol,
                          MxXmlLib::CdayCol,
                          MxXmlLib::CdateCol,
                          MxXmlLib::CdatetimeCol,
                          MxXmlLib::CtimeCol,
                          MxXmlLib::CyearMonthCol,
                          MxXmlLib::CmonthDayCol>(),
              "collections");

static_assert(AllComplete<MxXmlLib::CSerializationContext,
                          MxXmlLib::CXmlObjectBase,
                          MxXmlLib::CXmlGeneratedClass,
                          MxXmlLib::CClassTables,
                          MxXmlLib::CSchemaValueType,
                          MxXmlLib::CSchemaEnumeration>(),
              "binding");

static_assert(AllComplete<MxXmlLib::CJsonContext,
                          MxXmlLib::CFastInfosetContext,
                          MxXmlLib::CFIVocabulary>(),
              "formats");

// And the library links and works from such a file.
TEST(PublicHeaders, AUserFileReadsAndWritesThroughTheUmbrellaHeaderAlone)
{
    MxXmlLib::Register(16, 1);
    MxXmlLib::CSmartPtr<MxXmlLib::CElement> element(new MxXmlLib::CElement(""));
    element->FromXml("<a x='1'><b>t</b></a>");
    EXPECT_EQ("<a x=\"1\"><b>t</b></a>", element->ToXml(false, false, MxXmlLib::LF,
                                                     MxXmlLib::CSerializationContext::GetDefaultContext()));
}

} // namespace
