#pragma once

// The option enumerations of the entry points, on their own so that writers
// and readers can take an option without the whole context. Plain 32-bit
// enumerations; the numbers are part of the interface. No includes.

namespace MxXmlLib
{

// Text encoding of output; the numbers are part of the interface.
enum XmlEncoding
{
    XmlEncoding_None = 0,  // local encoding, no encoding in the declaration
    XmlEncoding_UTF8 = 1,  // no byte order mark
    XmlEncoding_UTF16 = 2, // little-endian; files start with FF FE
    XmlEncoding_UTF16NoDeclaration = 3,
};

enum EOLType
{
    CRLF = 0,
    LF = 1,
};

enum CompressionType
{
    CompressionNone = 0,
    CompressionGZip = 1,
    CompressionZLib = 2, // stream output only
};

// The XML declaration written in front of a Fast Infoset document.
enum FInfoDecl
{
    FInfoDecl_None = 0,
    FInfoDecl_Finf = 1,                // <?xml encoding='finf'?>
    FInfoDecl_FinfStandaloneYes = 2,
    FInfoDecl_FinfStandaloneNo = 3,
    FInfoDecl_V10Finf = 4,             // <?xml version='1.0' encoding='finf'?>
    FInfoDecl_V10FinfStandaloneYes = 5,
    FInfoDecl_V10FinfStandaloneNo = 6,
    FInfoDecl_V11Finf = 7,             // <?xml version='1.1' encoding='finf'?>
    FInfoDecl_V11FinfStandaloneYes = 8,
    FInfoDecl_V11FinfStandaloneNo = 9,
};

enum SchemaType
{
    SchemaType_Default = 0,
    // The parser runs without namespace processing and matching ignores
    // namespaces. Only this value has an effect.
    SchemaType_NoNamespaces = 2,
};

// How much XML structure JSON keys keep; the numbers are part of the interface.
enum JsonRoundTrip
{
    RoundTripNone = 0,       // attributes are plain keys; text that needs a key goes under ""
    RoundTripAttributes = 1, // attributes carry '@', text is "#text"; no namespaces
    RoundTripFull = 2,       // as 1, with namespaces, prefixes and xsi:type kept
};

} // namespace MxXmlLib
