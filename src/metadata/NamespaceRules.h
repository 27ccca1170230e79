#pragma once

#include <string_view>

namespace MxXmlLibData
{

// The test of a namespace against an XSD wildcard ("##any", "##other",
// "##local", "##targetNamespace", or literal URIs, separated by one space).
// Only the first token of a list is tested as such; after it, a namespace
// passes only when it is empty or equal to the whole list. A literal also lets
// the empty namespace through, and "##other" does not exclude it.
class CNamespaceRules
{
public:
    static bool IsNamespaceValid(std::string_view namespaceUri, std::string_view restriction,
                                 std::string_view targetNamespace);
    // Raises CMxInvalidNamespaceException "Invalid namespace [...]. ..." with
    // an empty path when IsNamespaceValid is false.
    static void TestNamespace(std::string_view namespaceUri, std::string_view restriction,
                              std::string_view targetNamespace);
};

} // namespace MxXmlLibData
