#include "engine/large_memory.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "engine/atomic_file.h"
#include "engine/file_bytes.h"
#include "engine/record_data.h"
#include "tests/support/temp_files.h"

namespace qv {
namespace {

TEST(LargeMemory, RecordTableGrowsCopiesAndShrinksAcrossTheLargeBlockSize) {
  // From the heap to large blocks as it grows, and back to the heap when copied small.
  RecordTable table;
  const std::uint32_t slots = 3 * kLargeBlock / sizeof(RecordSlot);
  for (std::uint32_t i = 0; i < slots; ++i) table.push_back({Bytes{std::uint8_t(i)}, i, 0});
  ASSERT_GE(table.capacity() * sizeof(RecordSlot), kLargeBlock);
  RecordTable copy = table;
  for (std::uint32_t i = 0; i < slots; i += 997) {
    EXPECT_EQ(copy[i].uid, i);
    EXPECT_EQ(copy[i].data, Bytes{std::uint8_t(i)});
  }
  copy.resize(10);
  copy.shrink_to_fit();
  EXPECT_EQ(copy.back().uid, 9u);
  table.clear();
  table.shrink_to_fit();
  EXPECT_EQ(table.capacity(), 0u);
}

TEST(LargeMemory, FileImagesHoldEveryByteOfSmallAndLargeFiles) {
  test::TempFolder folder;
  for (std::size_t size :
       {std::size_t{0}, std::size_t{1000}, kLargeBlock - 1, 3 * kLargeBlock + 5}) {
    std::string text(size, '\0');
    for (std::size_t i = 0; i < size; ++i) text[i] = static_cast<char>(i * 7 + i / 251);
    const auto* expected = reinterpret_cast<const std::uint8_t*>(text.data());
    const std::string path = folder.Path("f" + std::to_string(size));
    test::WriteText(path, text);
    FileStamp stamp;
    auto image = ReadFileImage(path, kMaxFileSize, &stamp);
    ASSERT_TRUE(image) << size;
    EXPECT_EQ(stamp.size, size);
    ASSERT_EQ(image->size(), size);
    EXPECT_TRUE(std::equal(image->begin(), image->end(), expected)) << size;
    FileBytes moved = std::move(*image);
    EXPECT_EQ(moved.size(), size);
    moved.Shrink(size / 2);
    EXPECT_EQ(moved.size(), size / 2);
    EXPECT_TRUE(std::equal(moved.begin(), moved.end(), expected)) << size;
  }
  EXPECT_FALSE(ReadFileImage(folder.Path("f1000"), 999));  // beyond the limit
  EXPECT_FALSE(ReadFileImage(folder.Path("none")));
}

}  // namespace
}  // namespace qv
