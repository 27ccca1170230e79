#pragma once

// What the schema compiler's tests share: schemas written to a temporary
// folder, the independent validating parse of Xerces-C, and a run of the mx
// program with its exit status and both output streams.

#include <string>
#include <vector>

namespace MxCompilerTest
{

// A folder of its own for one test process, removed at exit.
std::string TempDir();
// Writes `text` to TempDir()/name and gives the path.
std::string WriteTemp(std::string const &name, std::string const &text);
std::string ReadFile(std::string const &path);

// Validates XML text against the schema files with Xerces-C: the empty
// string when valid, otherwise the first error with line and column.
std::string XercesValidate(std::vector<std::string> const &schemas, std::string const &xml);

// A purchase order with every branch of the example schema: both addresses,
// the comment, items with a ship date, a pickup, neither, and text to escape.
std::string LargeOrder(int items);
// Long texts differ in one place at most: the failure says where, with a
// little context on each side.
void ExpectSameText(std::string const &expected, std::string const &actual);

struct RunResult
{
    int status = -1;
    std::string out;
    std::string err;
};
// Runs the mx program with the arguments (each quoted for the shell).
RunResult RunMx(std::vector<std::string> const &args, std::string const &input = std::string());

} // namespace MxCompilerTest
