#include "metadata/NamespaceRules.h"

#include "runtime/FormatString.h"
#include "runtime/MxException.h"

#include <string>

namespace MxXmlLibData
{

namespace
{
bool TokenAccepts(std::string_view token, std::string_view namespaceUri, std::string_view restriction,
                  std::string_view targetNamespace)
{
    if (token == "##any")
        return true;
    if (token == "##other")
        return namespaceUri != targetNamespace;
    if (token == "##local")
        return namespaceUri.empty();
    if (token == "##targetNamespace")
        return namespaceUri == targetNamespace;
    // A literal is compared with the whole restriction, not with the token:
    // generated single-URI restrictions rely on exactly this.
    return namespaceUri == restriction || namespaceUri.empty();
}
} // namespace

bool CNamespaceRules::IsNamespaceValid(std::string_view namespaceUri, std::string_view restriction,
                                       std::string_view targetNamespace)
{
    std::size_t const space = restriction.find(' ');
    std::string_view const first = space == std::string_view::npos ? restriction : restriction.substr(0, space);
    if (TokenAccepts(first, namespaceUri, restriction, targetNamespace))
        return true;
    if (space == std::string_view::npos)
        return false;
    // Once the first token is consumed, the walk keeps only a single space, so
    // every later pass sees an empty token and asks the same literal question.
    // If that answer is no, no further pass can change it: the answer is false.
    return TokenAccepts(std::string_view(), namespaceUri, restriction, targetNamespace);
}

void CNamespaceRules::TestNamespace(std::string_view namespaceUri, std::string_view restriction,
                                    std::string_view targetNamespace)
{
    if (IsNamespaceValid(namespaceUri, restriction, targetNamespace))
        return;
    std::string const uri(namespaceUri), allowed(restriction), target(targetNamespace);
    throw MxXmlLib::CMxInvalidNamespaceException(
        MxXmlLib::FormatString("Invalid namespace [%s]. The namespace must be one of [%s] where the target "
                               "namespace is [%s].",
                               uri.c_str(), allowed.c_str(), target.c_str()),
        "");
}

} // namespace MxXmlLibData
