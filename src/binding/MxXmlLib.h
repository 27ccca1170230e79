#pragma once

// The whole public interface of the library in one include, by subsystem
// from the bottom up. Every header that users may reach is here; the others
// are internal and not installed.

// Runtime: lifetime, exceptions, text encodings, streams, files, compression.
#include "runtime/BinaryStream.h"
#include "runtime/Compression.h"
#include "runtime/CriticalSection.h"
#include "runtime/EventSink.h"
#include "runtime/FileBinaryStream.h"
#include "runtime/FileTextStream.h"
#include "runtime/FormatString.h"
#include "runtime/InstanceMonitor.h"
#include "runtime/MxException.h"
#include "runtime/OptionEnums.h"
#include "runtime/SmartPtr.h"
#include "runtime/StringBuffer.h"
#include "runtime/TextEncoding.h"
#include "runtime/TextStream.h"

// Values: the variant, conversions, facets and the XSD value classes.
#include "values/Base64.h"
#include "values/BigInteger.h"
#include "values/BinaryData.h"
#include "values/Conversions.h"
#include "values/DateTime.h"
#include "values/DateTimeSpan.h"
#include "values/Decimal.h"
#include "values/FacetCheck.h"
#include "values/PrimitiveRestrictions.h"
#include "values/Variant.h"
#include "values/WhitespaceUtils.h"
#include "values/XsdPattern.h"

// Document: the parsed tree and the writers.
#include "document/XmlDocument.h"
#include "document/XmlTextWriter.h"
#include "document/XmlWriter.h"

// Metadata: the rows of generated classes, factories, namespace rules.
#include "metadata/AttributeInfo.h"
#include "metadata/ClassFactory.h"
#include "metadata/ElementInfo.h"
#include "metadata/ElementInfoAll.h"
#include "metadata/ElementInfoChoice.h"
#include "metadata/ElementInfoSeq.h"
#include "metadata/NamespaceAliasMap.h"
#include "metadata/NamespaceRules.h"

// Collections and untyped nodes.
#include "collections/Attribute.h"
#include "collections/AttributeCol.h"
#include "collections/Element.h"
#include "collections/ElementCol.h"
#include "collections/GeneratedCollections.h"
#include "collections/PrimitiveCollections.h"
#include "collections/XmlCollection.h"
#include "collections/XmlCollectionBase.h"
#include "collections/XmlTypeCollection.h"

// Binding: the object base, the context, the generated-class driver.
#include "binding/ClassTables.h"
#include "binding/SchemaValues.h"
#include "binding/SerializationContext.h"
#include "binding/XmlGeneratedClass.h"
#include "binding/XmlObjectBase.h"

// The formats' options.
#include "fastinfoset/FIVocabulary.h"
#include "fastinfoset/FastInfosetContext.h"
#include "json/JsonContext.h"
