#pragma once

// The front end: loads a schema set with Xerces-C's schema component model
// and decides the whole model from it. Nothing of Xerces leaks out.

#include "model/SchemaModel.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace MxCompiler
{

// A schema that cannot be loaded or that the model cannot express. The text
// names the file, line and column (Xerces' own message), or the construct
// and where it stands in the schema.
class CSchemaError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// Loads the files (XSD; includes and imports are followed, network locations
// refused) and builds the model. Raises CSchemaError.
Model LoadSchemaModel(std::vector<std::string> const &files);

} // namespace MxCompiler
