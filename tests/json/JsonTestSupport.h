#pragma once

// Replays an XML text into a CXmlWriter the way the element rows drive it:
// declarations on the root go to the writer before the root, and a run of two
// or more siblings of one name is announced as a collection through the
// parent context's ArrayState. Text and attribute values that are integers or
// booleans are given those item types, the rest are strings.

#include "document/XmlWriter.h"

#include <string>

namespace MxJsonTest
{

void ReplayXml(std::string const &xml, MxXmlLib::CXmlWriter &writer);

// The JSON that the ToJson frame would make of the replayed XML.
std::string XmlToJsonText(std::string const &xml, int roundTrip, bool formatted);

std::string ReadFile(std::string const &path);
void WriteFile(std::string const &path, std::string const &text);

// Runs the committed strict checker (Python's json module) over the files;
// one "valid" or "invalid" per file, or nothing when python3 cannot run.
std::string CheckJsonFiles(std::string const &fileList);

} // namespace MxJsonTest
