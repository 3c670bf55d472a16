#include "interpreter/string_array.hpp"

#include <atomic>
#include <cstdlib>
#include <new>
#include <random>
#include <string>

#include <gtest/gtest.h>
#include <malloc.h>

#include "interpreter/array.hpp"

// Counts what this program and the host library hold on the heap.
namespace {
std::atomic<std::size_t> held{0};
}

// Not inlined: GCC would see malloc's memory reach operator delete, and call that a mismatch.
[[gnu::noinline]] void* operator new(std::size_t size) {
  void* const memory = std::malloc(size);
  if (!memory) throw std::bad_alloc();
  held += malloc_usable_size(memory);
  return memory;
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
  held -= malloc_usable_size(memory);
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  operator delete(memory);
}

namespace Quindarel::String {
namespace {

using Model = std::vector<std::optional<std::u16string>>;

void expectSame(StringArray const& array, Model const& model) {
  ASSERT_EQ(array.size(), model.size());
  for (std::size_t i = 0; i < model.size(); ++i) ASSERT_EQ(array[i], model[i]) << "element " << i;
}

TEST(StringArray, HoldsWhatWasSetLastInAnyOrder) {
  std::mt19937 random(7);
  Model model(50);
  StringArray array(model.size());
  expectSame(array, model);
  for (int step = 0; step < 20000; ++step) {
    std::size_t const i = random() % model.size();
    if (random() % 8 == 0) {
      model[i].reset();
      array.setMissing(i);
    } else if (std::size_t const from = random() % model.size(); random() % 8 == 0 && model[from]) {
      model[i] = model[from];
      array.setText(i, *array[from]);
    } else {
      // Around where the length needs a longer header, where a text gets a block of its own, and short.
      std::size_t const lengths[] = {0, 1, random() % 300, 65533 + random() % 5, 131070 + random() % 5};
      model[i] = std::u16string(lengths[random() % (step % 400 == 0 ? 5 : 3)], static_cast<char16_t>(random()));
      array.setText(i, *model[i]);
    }
    if (step % 500 == 0) expectSame(array, model);
  }
  expectSame(array, model);
}

TEST(StringArray, CostsLittleBeyondTheTextAndGivesReplacedTextBack) {
  constexpr std::size_t count = 200000;
  std::u16string const text = u"a/path/of/the/usual/length/file.txt";
  std::size_t const textBytes = count * text.size() * sizeof(char16_t);
  std::size_t const before = held;
  StringArray array(count);
  for (std::size_t i = 0; i < count; ++i) array.setText(i, text);
  EXPECT_LT(held - before, textBytes + 12 * count + (std::size_t{2} << 20));

  for (int round = 0; round < 20; ++round)
    for (std::size_t i = count; i-- > 0;) array.setText(i, text);
  EXPECT_LT(held - before, 2 * textBytes + 20 * count);
}

TEST(InterpreterArray, NormalisesItsShapeAndRefusesOneThatDoesNotFit) {
  namespace api = matrix::detail::noninlined::vx_array_api;
  auto const logicals = [](std::vector<std::size_t> shape, vxArray_tag::Logicals values) {
    return createArray(std::move(shape), std::move(values));
  };
  EXPECT_EQ(logicals({1, 1, 1, 1}, {1})->dimensions().size(), 2U);
  EXPECT_EQ(logicals({}, {1})->dimensions().size(), 2U);
  EXPECT_EQ(logicals({1, 1, 2, 1}, {1, 0})->dimensions().size(), 3U);
  EXPECT_THROW(logicals({2, 2}, {1}), std::invalid_argument);
  EXPECT_THROW(createStringArray(~0UL, 2), std::length_error);
  EXPECT_EQ(createStringArray(~0UL, 0)->size(), 0U);

  EXPECT_TRUE(api::vxIsLogicalScalarTrue(logicals({1, 1, 1}, {2}).get()));
  EXPECT_FALSE(api::vxIsLogicalScalarTrue(logicals({1, 1}, {0}).get()));
  EXPECT_FALSE(api::vxIsLogicalScalar(logicals({0, 0}, {}).get()));
  EXPECT_FALSE(api::vxIsLogicalScalar(createArray({1, 1}, vxArray_tag::Doubles{1}).get()));
  EXPECT_FALSE(api::vxIsLogicalScalar(nullptr));
}

}  // namespace
}  // namespace Quindarel::String
