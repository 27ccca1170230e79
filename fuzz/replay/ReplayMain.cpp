// The main of the replay programs: a plain build of one fuzz target's
// function (no libFuzzer, no coverage) fed every file of the folders or
// files it is given, in name order, so that the committed corpus and every
// past crash run under the ordinary sanitizer build of the test suite.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size);

int main(int argc, char **argv)
{
    namespace fs = std::filesystem;
    std::vector<fs::path> inputs;
    for (int i = 1; i < argc; ++i)
    {
        fs::path const path(argv[i]);
        if (fs::is_directory(path))
        {
            for (auto const &entry : fs::directory_iterator(path))
                if (entry.is_regular_file())
                    inputs.push_back(entry.path());
        }
        else if (fs::is_regular_file(path))
            inputs.push_back(path);
        else
        {
            std::fprintf(stderr, "no such input: %s\n", argv[i]);
            return 2;
        }
    }
    std::sort(inputs.begin(), inputs.end());
    for (fs::path const &input : inputs)
    {
        std::ifstream in(input, std::ios::binary);
        std::vector<uint8_t> const bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
    std::printf("replayed %zu inputs\n", inputs.size());
    return inputs.empty() ? 1 : 0;
}
