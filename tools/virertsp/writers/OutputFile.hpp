#pragma once

#include <cstdio>
#include <memory>
#include <string>

namespace Virertsp {

/// A file that is written from its beginning. Every failure throws `Failure` with the file's name.
class OutputFile {
public:
    /// What to do with a file that is there.
    enum class Existing { kKeep, kReplace };

    /// Throws as well when the file is there and to be kept.
    explicit OutputFile(const std::string& aPath, Existing aExisting = Existing::kKeep);

    void Write(const void* aData, std::size_t aSize);
    /// Writes out what is still held back; nothing may be written afterwards.
    void Close();

    const std::string& Path() const { return mPath; }

private:
    struct CloseFile {
        void operator()(std::FILE* aFile) const { std::fclose(aFile); }
    };

    [[noreturn]] void Fail() const;

    std::string mPath;
    std::unique_ptr<std::FILE, CloseFile> mFile;
};

/// Makes the directory if it is not there. Throws `Failure`.
void MakeDirectory(const std::string& aPath);

}  // namespace Virertsp
