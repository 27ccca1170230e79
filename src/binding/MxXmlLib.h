#pragma once

// The whole public interface of the library in one include.

#include "runtime/CriticalSection.h"
#include "runtime/EventSink.h"
#include "runtime/FormatString.h"
#include "runtime/InstanceMonitor.h"
#include "runtime/MxException.h"
#include "runtime/SmartPtr.h"
#include "runtime/TextEncoding.h"

#include "binding/SerializationContext.h"
#include "binding/XmlObjectBase.h"
#include "collections/XmlCollectionBase.h"
#include "document/XmlDocument.h"
#include "metadata/NamespaceAliasMap.h"
#include "document/XmlTextWriter.h"
#include "document/XmlWriter.h"
#include "runtime/StringBuffer.h"
#include "runtime/TextStream.h"
#include "values/Conversions.h"
#include "values/PrimitiveRestrictions.h"
#include "values/Variant.h"
#include "values/WhitespaceUtils.h"
