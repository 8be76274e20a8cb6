/// @file
/// A fresh directory for a test on the real file system, removed with all that is in it, and the number of descriptors
/// that the process has open.
///
/// @code
/// class Files : public ScratchTest {};
///
/// TEST_F(Files, AreMade) {
///     WriteFile(scratch / "a", "text");
///     EXPECT_TRUE(std::filesystem::exists(scratch / "a"));
/// }
/// @endcode
#pragma once

#include <cstdlib>
#include <dirent.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <unistd.h>

/// The number of open descriptors of this process.
inline int OpenDescriptors() {
    DIR* const directory = opendir("/proc/self/fd");
    if (directory == nullptr) {
        throw std::runtime_error("/proc/self/fd can't be read");
    }
    int count = 0;
    while (const dirent* entry = readdir(directory)) {
        count += entry->d_name[0] != '.' ? 1 : 0;
    }
    closedir(directory);
    return count - 1; // The one that reads.
}

/// Made by the constructor, removed by the destructor.
class ScratchDirectory {
public:
    /// Its name has no dot and is pure ASCII.
    ScratchDirectory() {
        const char* const temporary = std::getenv("TMPDIR");
        std::string name = std::string(temporary != nullptr ? temporary : "/tmp") + "/qor-test-XXXXXX";
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no scratch directory can be made");
        }
        _path = name;
    }
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;
    ~ScratchDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(_path, ignored);
    }

    const std::filesystem::path& Path() const { return _path; }
    std::filesystem::path operator/(const std::filesystem::path& name) const { return _path / name; }
    std::string operator+(const std::string& tail) const { return _path.string() + tail; }

private:
    std::filesystem::path _path;
};

inline void WriteFile(const std::filesystem::path& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

inline std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

/// Tests in a scratch directory; each must leave as many descriptors open as it found.
class ScratchTest : public testing::Test {
protected:
    ScratchDirectory scratch;

    void SetUp() override { _descriptors = OpenDescriptors(); }
    void TearDown() override { EXPECT_EQ(OpenDescriptors(), _descriptors) << "descriptors open"; }

private:
    int _descriptors = 0;
};
