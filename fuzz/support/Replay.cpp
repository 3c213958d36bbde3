// Stands in for the fuzzer where there is none: runs the files and the folders of files given, one input each.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* aData, std::size_t aSize);

namespace {

namespace fs = std::filesystem;

bool Replay(const fs::path& aFile) {
    std::ifstream lFile(aFile, std::ios::binary);
    const std::vector<char> lText{std::istreambuf_iterator<char>(lFile), std::istreambuf_iterator<char>()};
    if (!lFile.good() && !lFile.eof()) { return false; }
    // Named first: a find ends the process.
    std::printf("%s: %zu bytes\n", aFile.c_str(), lText.size());
    std::fflush(stdout);
    const std::vector<std::uint8_t> lBytes(lText.begin(), lText.end());
    LLVMFuzzerTestOneInput(lBytes.data(), lBytes.size());
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    int lInputs = 0;
    for (int lIdx = 1; lIdx < argc; ++lIdx) {
        const fs::path lPath(argv[lIdx]);
        std::vector<fs::path> lFiles;
        if (fs::is_directory(lPath)) {
            for (const auto& lEntry : fs::directory_iterator(lPath)) {
                lFiles.push_back(lEntry.path());
            }
        } else {
            lFiles.push_back(lPath);
        }
        for (const fs::path& lFile : lFiles) {
            if (!Replay(lFile)) {
                std::fprintf(stderr, "%s can't be read\n", lFile.c_str());
                return 1;
            }
            ++lInputs;
        }
    }
    std::printf("%d inputs\n", lInputs);
    return 0 == lInputs ? 1 : 0;
}
