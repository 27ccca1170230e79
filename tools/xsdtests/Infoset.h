#pragma once

// The independent check: Xerces-C validates a document against the schema
// set and hands its post-schema-validation infoset, from which we keep what
// the schema binds, with simple values in their canonical form (so 1.50
// and +1.5 compare equal, as their values do).

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace XsdTests
{

struct Node
{
    std::string ns, local;
    std::map<std::pair<std::string, std::string>, std::string> attributes; // canonical values, xsi:* and xmlns left out
    std::vector<std::unique_ptr<Node>> children;
    std::string text;       // character data directly inside, concatenated
    bool hasValue = false;  // simple content: `value` is its canonical form
    std::string value;
    bool elementOnly = false; // text between children is only formatting
    bool unordered = false;   // the children of an all group: their order binds nothing
    bool nil = false;
    std::string type;       // {ns}name of a named type, for xsi:type
    std::string primitive;  // the simple type's primitive, for messages
};

class Validator
{
public:
    // Loads the schema documents into a grammar pool. Raises std::runtime_error
    // with Xerces' first message.
    // `locations` maps schema locations on the network to local files.
    Validator(std::vector<std::string> const &schemas, std::map<std::string, std::string> const &locations);
    ~Validator();
    Validator(Validator const &) = delete;
    Validator &operator=(Validator const &) = delete;

    // Validates and reads a document. An empty `error` means valid.
    std::unique_ptr<Node> Parse(std::string const &bytes, std::string &error);

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

// The first difference of two infosets as "what (where)", or "" when equal.
std::string Compare(Node const &expected, Node const &actual);

} // namespace XsdTests
