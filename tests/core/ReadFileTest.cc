#include <filesystem>

#include <gtest/gtest.h>

#include "core/support/ReadFile.h"
#include "tests/support/Files.h"
#include "tests/support/Outcome.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

TEST(ReadFile, ReturnsEveryByteAndTheSpareRoom) {
    const test::TempDir dir;
    const std::filesystem::path file = dir / "f";
    for (const std::size_t size : {0U, 1U, 15U, 16U, 4095U, 4096U, 4097U, 100'000U}) {
        std::string bytes(size, 'x');
        for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 7);
        test::writeText(file, bytes);
        for (const std::size_t spare : {0U, 64U, 5000U}) {
            const auto text = readFile(file, spare);
            ASSERT_EQ(test::outcomeOf(text), "ok");
            EXPECT_EQ(*text, bytes);
            EXPECT_GE(text->capacity(), size + spare);
        }
    }
}

TEST(ReadFile, ALargeFileIsRefused) {
    const test::TempDir dir;
    const std::filesystem::path file = dir / "f";
    test::writeText(file, "");
    std::filesystem::resize_file(file, kLargestReadableFile);
    EXPECT_EQ(readFile(file)->size(), kLargestReadableFile);
    std::filesystem::resize_file(file, kLargestReadableFile + 1);
    const FileError tooLarge{FileError::Operation::read, file, EFBIG};
    EXPECT_EQ(readFile(file).error(), tooLarge);
    std::filesystem::resize_file(file, std::uintmax_t{1} << 40);
    EXPECT_EQ(readFile(file).error(), tooLarge);
}

TEST(ReadFile, LeavesNoDescriptorOpen) {
    const test::TempDir dir;
    test::writeText(dir / "f", "x");
    const std::size_t before = test::openDescriptors();
    for (int i = 0; i < 100; ++i) {
        EXPECT_TRUE(readFile(dir / "f"));
        EXPECT_FALSE(readFile(dir / "none"));
        EXPECT_FALSE(readFile(dir.path()));
    }
    EXPECT_EQ(test::openDescriptors(), before);
}

TEST(FileError, DescriptionsAreOperationAndTheSystemsText) {
    using enum FileError::Operation;
    const struct {
        FileError error;
        const char* description;
    } rows[] = {
        {{open, "/x", EACCES}, "open failed: Permission denied"},
        {{read, "/x", EIO}, "read failed: Input/output error"},
        {{write, "/x", ENOSPC}, "write failed: No space left on device"},
        {{replace, "/x", EROFS}, "replacing the file failed: Read-only file system"},
        {{createFolder, "/x/y", ENOTDIR}, "cannot create folder /x/y: Not a directory"},
    };
    for (const auto& row : rows) EXPECT_EQ(row.error.description(), row.description);
}

}  // namespace
}  // namespace ferrivane
