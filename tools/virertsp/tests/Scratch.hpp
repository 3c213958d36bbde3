#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace Virertsp {

/// A directory that lives as long as this object.
class Scratch {
public:
    Scratch() {
        std::string lTemplate = (std::filesystem::temp_directory_path() / "virertsp-XXXXXX").string();
        mPath = mkdtemp(lTemplate.data());
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    ~Scratch() { std::filesystem::remove_all(mPath); }

    std::string Path(const std::string& aName) const { return mPath + "/" + aName; }
    std::string Contents(const std::string& aName) const {
        std::ostringstream lText;
        lText << std::ifstream(Path(aName), std::ios::binary).rdbuf();
        return lText.str();
    }

private:
    std::string mPath;
};

}  // namespace Virertsp
