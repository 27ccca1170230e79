#pragma once

// The C++ back end: one header and one source (or a pair per class) of classes of the generated
// shape (tables of rows built on first use, a numbered property function,
// factories, enumeration function pairs) with typed getters and setters,
// from the same model as the run-time back end. Output is deterministic:
// the same model gives the same bytes.

#include "model/SchemaModel.h"

#include <map>
#include <string>
#include <vector>

namespace MxCompiler
{

struct CppOptions
{
    std::string baseName = "Schema"; // file names: <baseName>.h, <baseName>.cpp
    std::string cppNamespace;        // empty: from --namespace for the first root's namespace, else baseName
    std::map<std::string, std::string> namespaces; // schema namespace URI -> C++ namespace
    std::vector<std::string> schemaNames;          // named in the header comment
    // One header and one source per class (named after the class), and the
    // set's own <baseName>.h (which includes every class header) and
    // <baseName>.cpp: enumerations, class numbers, factories, value types.
    bool filePerType = false;
};

struct GeneratedFile
{
    std::string name;
    std::string text;
};

// Raises CSchemaError when a name cannot be made into C++.
std::vector<GeneratedFile> GenerateCpp(Model const &model, CppOptions const &options);

} // namespace MxCompiler
