#include "writers/OutputFile.hpp"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "Failure.hpp"

namespace Virertsp {

static_assert(sizeof(off_t) >= 8, "A recording may grow beyond 2 GiB");

namespace {

bool IsFile(const std::string& aPath) {
    struct stat lStatus = {};
    return 0 == stat(aPath.c_str(), &lStatus) && S_ISREG(lStatus.st_mode);
}

}  // namespace

OutputFile::OutputFile(const std::string& aPath, Existing aExisting) : mPath(aPath) {
    // Nothing is lost by writing to what is there and no file, such as a device.
    const bool lReplaces = Existing::kReplace == aExisting || !IsFile(aPath);
    mFile.reset(std::fopen(aPath.c_str(), lReplaces ? "wbe" : "wbxe"));
    if (mFile) { return; }
    if (EEXIST == errno) { throw Failure(kExitOutput, aPath + " is there already; --force replaces it."); }
    Fail();
}

void OutputFile::Write(const void* aData, std::size_t aSize) {
    if (aSize != std::fwrite(aData, 1, aSize, mFile.get())) { Fail(); }
}

void OutputFile::Close() {
    if (mFile && 0 != std::fclose(mFile.release())) { Fail(); }
}

void OutputFile::Fail() const {
    throw Failure(kExitOutput, "Can't write " + mPath + ": " + std::strerror(errno) + ".");
}

void MakeDirectory(const std::string& aPath) {
    if (0 == mkdir(aPath.c_str(), 0777)) { return; }
    const int lError = errno;
    struct stat lStatus = {};
    if (0 == stat(aPath.c_str(), &lStatus) && S_ISDIR(lStatus.st_mode)) { return; }
    throw Failure(kExitOutput, "Can't make the directory " + aPath + ": " + std::strerror(lError) + ".");
}

}  // namespace Virertsp
