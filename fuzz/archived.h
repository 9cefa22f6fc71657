// SPDX-License-Identifier: MIT
#ifndef FUZZ_ARCHIVED_H_
#define FUZZ_ARCHIVED_H_

#include <cstddef>
#include <cstdint>
#include <istream>
#include <memory>
#include <optional>
#include <ostream>
#include <streambuf>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "fuzz/byte_streams.h"
#include "fuzz/runs.h"
#include "fuzz/target.h"
#include "tests/support/allocation_meter.h"
#include "tests/support/archived_classes.h"
#include "vxfoundation/archive.h"

namespace fuzz {

/// How an input of a family begins: a byte that chooses a class, and how objects of it come. The
/// archive follows, and behind it the numbers of the patterns that the object runs with.
struct Head {
  static constexpr std::uint8_t kInPlace = 0x80;  // not by pointer
  static constexpr std::uint8_t kTwice = 0x40;    // two objects in one archive

  explicit Head(std::uint8_t byte)
      : inPlace((byte & kInPlace) != 0), twice((byte & kTwice) != 0), number(byte & 0x3f) {}

  bool inPlace;
  bool twice;
  std::size_t number;
};

template <class T>
constexpr bool isPersistent = std::is_base_of_v<vxPersistent, T>;
template <class T>
constexpr bool isTool = std::is_same_v<T, vxClassifierTool>;

/// A class of a host loads its fields one by one, so that a failure leaves half of them.
template <class T>
constexpr bool isHostClass = false;

template <class T, class = void>
struct HasClone : std::false_type {};
template <class T>
struct HasClone<T, std::void_t<decltype(std::declval<const T&>().clone())>> : std::true_type {};

template <class T, class = void>
struct HasEquality : std::false_type {};
template <class T>
struct HasEquality<T, std::void_t<decltype(std::declval<const T&>() == std::declval<const T&>())>>
    : std::true_type {};

/// What an object is loaded into.
template <class T>
const T& fullSample() {
  static const Samples<T> samples = Archived<T>::samples();
  return samples.back().object;
}

/// What an object in place is stored as; nothing where a part of it, say an empty score function,
/// has no form. Storing changes nothing.
template <class T>
std::optional<std::string> storedBytes(const T& object) {
  ByteSink sink;
  std::ostream stream(&sink);
  vxOutputArchive output(stream);
  vxArchive& archive = output;
  try {
    archive || const_cast<T&>(object);
  } catch (const vxBadPointer&) {
    return std::nullopt;
  }
  return std::move(sink.bytes);
}

/// Null for an object of another class, and for an uncounted one that `earlier` owns already.
template <class T>
std::shared_ptr<T> loadPointer(vxArchive& archive, const std::vector<std::shared_ptr<T>>& earlier) {
  vxPersistent* object = nullptr;
  vxPersistent::serializePointer(archive, nullptr, object);
  if constexpr (std::is_base_of_v<vxRepBase, T>) {
    const bool isCounted = dynamic_cast<vxRepBase*>(object) != nullptr;
    const std::unique_ptr<vxPersistent> uncounted(isCounted ? nullptr : object);
    vxPtrHandle<T> handle;
    handle.assignChecked(isCounted ? object : nullptr);
    T* const held = handle.get();
    return std::shared_ptr<T>(held, [handle](T*) {});
  } else {
    for (const std::shared_ptr<T>& known : earlier) {
      if (object != nullptr && object == known.get()) return nullptr;
    }
    std::shared_ptr<vxPersistent> owner;
    if (dynamic_cast<vxRepBase*>(object) == nullptr) owner.reset(object);
    return std::dynamic_pointer_cast<T>(owner);
  }
}

template <class T>
void loadInPlace(vxArchive& archive, T& target) {
  try {
    archive || target;
  } catch (const vxArchive::Errors&) {
    static const auto before = storedBytes(fullSample<T>());
    const auto after = storedBytes(target);
    const bool isEmptyTool = isTool<T> && after == storedBytes(vxClassifierTool());
    demand(after == before || isEmptyTool || isHostClass<T>,
           "a failed load leaves its target as it was");
    throw;
  }
}

/// The objects of an input in the order in which they arrived. A refusal ends them; whatever else a
/// load throws leaves here and ends the program.
template <class T>
std::vector<std::shared_ptr<T>> loadAll(const Head& head, std::streambuf& source) {
  std::vector<std::shared_ptr<T>> objects;
  objects.reserve(2);
  std::istream stream(&source);
  try {
    vxInputArchive input(stream);
    for (int i = 0; i < (head.twice ? 2 : 1); ++i) {
      if constexpr (isPersistent<T>) {
        if (!head.inPlace || i > 0) {
          objects.push_back(loadPointer<T>(input, objects));
          continue;
        }
      }
      auto object = std::make_shared<T>(fullSample<T>());
      loadInPlace(input, *object);
      objects.push_back(std::move(object));
    }
  } catch (const vxArchive::Errors&) {
  }
  return objects;
}

template <class T>
void checkClone(const T& object) {
  if constexpr (HasClone<T>::value) {
    try {
      using Clone = decltype(object.clone());
      using Owner = std::conditional_t<std::is_pointer_v<Clone>,
                                       std::unique_ptr<std::remove_pointer_t<Clone>>, Clone>;
      const Owner clone(object.clone());
      tryAll([&] { return storedBytes(dynamic_cast<const T&>(*clone)); });
    } catch (const vxBadPointer&) {
      // Of a damaged object, which misses a part.
    }
  }
}

template <class T>
void checkEquality(const T& a, const T& b) {
  if constexpr (HasEquality<T>::value) {
    const auto equal = [](const T& left, const T& right) -> std::optional<bool> {
      try {
        return left == right;
      } catch (const vxBadPointer&) {
        return std::nullopt;
      }
    };
    demand(equal(a, b) == equal(b, a), "equality goes both ways");
    static_cast<void>(equal(a, a));
    static_cast<void>(equal(a, fullSample<T>()));
  }
}

/// Everything that can be done to an object that arrived: it arrives the same again and its copy,
/// clone and reloaded self behave as it does.
template <class T>
void exerciseObject(const T& object, Numbers numbers) {
  const std::optional<std::string> bytes = storedBytes(object);
  if (bytes) {
    T again(fullSample<T>());
    ByteSource source(reinterpret_cast<const std::uint8_t*>(bytes->data()), bytes->size());
    std::istream stream(&source);
    vxInputArchive input(stream);
    vxArchive& archive = input;
    archive || again;
    demand(source.consumed() == bytes->size(), "a load takes what was stored");
    demand(storedBytes(again) == bytes, "what was loaded is stored as it came");
    checkEquality(object, again);
    demand(runs(object, numbers) == runs(again, numbers), "what was loaded runs as it did");

    const T copy(object);
    const bool isCopiedEmpty = isTool<T> && storedBytes(copy) == storedBytes(vxClassifierTool());
    demand(storedBytes(copy) == bytes || isCopiedEmpty, "a copy is stored as the original");
  }
  checkClone(object);
  tryAll([&] { Archived<T>::use(object); });
}

// What all uses of an input together may allocate: much more than they need, much less than what a
// number in an archive can ask for.
constexpr std::size_t kMostOfAllUses = std::size_t{1} << 28;

/// The archived classes of one target.
template <class... T>
struct Family {
  using Types = std::tuple<T...>;

  static void exercise(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return;
    const Head head(data[0]);
    std::size_t i = 0;
    const bool done[] = {(i++ == head.number % sizeof...(T) &&
                          (exerciseOne_<T>(head, data + 1, size - 1), true))...};
    static_cast<void>(done);
  }

  static std::vector<Token> tokens(const std::uint8_t* data, std::size_t size) {
    std::vector<Token> found;
    if (size == 0) return found;
    const Head head(data[0]);
    std::size_t i = 0;
    const bool done[] = {(i++ == head.number % sizeof...(T) &&
                          (tokensOfOne_<T>(head, data + 1, size - 1, found), true))...};
    static_cast<void>(done);
    for (Token& token : found) ++token.offset;
    return found;
  }

 private:
  template <class One>
  static void tokensOfOne_(const Head& head, const std::uint8_t* data, std::size_t size,
                           std::vector<Token>& found) {
    TracedSource source(data, size);
    loadAll<One>(head, source);
    found = source.tokens();
  }

  template <class One>
  static void exerciseOne_(const Head& head, const std::uint8_t* data, std::size_t size) {
    static_cast<void>(fullSample<One>());
    ByteSource source(data, size);
    const AllocationMeter meter;
    const std::vector<std::shared_ptr<One>> objects = loadAll<One>(head, source);
    demand(meter.bytes() <= 64 * source.consumed() + 65536, "a load allocates in proportion");
    const Numbers numbers(data + source.consumed(), size - source.consumed());
    for (const std::shared_ptr<One>& object : objects) {
      if (object) exerciseObject(*object, numbers);
    }
    if (objects.size() == 2 && objects[0] && objects[1]) checkEquality(*objects[0], *objects[1]);
    demand(meter.bytes() <= kMostOfAllUses, "no use of an object allocates out of proportion");
  }
};

}  // namespace fuzz

#endif  // FUZZ_ARCHIVED_H_
