#pragma once

// The cases of the W3C XML Schema test suite that a binding can be judged
// on: instance tests whose schema is expected valid, XSD 1.0 only.

#include <string>
#include <vector>

namespace XsdTests
{

struct Case
{
    std::string set;                  // nist, ms, sun, boeing, common
    std::string group;                // the test group: all its instances share the schema set
    std::vector<std::string> schemas; // paths relative to the root
    std::string instance;             // path relative to the root
    bool valid = true;                // the suite's expected instance validity
};

// Every case of the suite under `root` (the folder holding nistData, msMeta,
// ...), in catalogue order. Cases whose instance file is missing are left
// out and counted in `missing`.
std::vector<Case> ReadSuite(std::string const &root, int &missing);

// A list of cases written by WriteCases: one line per case, tab-separated.
std::vector<Case> ReadCases(std::string const &file);
void WriteCases(std::string const &file, std::vector<Case> const &cases);

} // namespace XsdTests
