#pragma once

// The front end: loads a schema set with Xerces-C's schema component model
// and decides the whole model from it. Nothing of Xerces leaks out.

#include "model/SchemaModel.h"

#include <map>
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

// Schema locations as schemas write them (a URL, most often), each with the
// local file to read instead: an offline copy of a schema on the network.
using SchemaLocations = std::map<std::string, std::string>;

// Loads the files (XSD; includes and imports are followed, network locations
// refused unless `locations` maps them to a local file) and builds the
// model. Raises CSchemaError.
Model LoadSchemaModel(std::vector<std::string> const &files, SchemaLocations const &locations = {});

} // namespace MxCompiler
