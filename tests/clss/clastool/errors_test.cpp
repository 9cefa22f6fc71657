// SPDX-License-Identifier: MIT
#include "vxclss/errors.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>

#include "tests/support/archive_helpers.h"
#include "tests/support/class_names.h"
#include "tests/support/error_matcher.h"
#include "tests/support/unknown_version.h"
#include "vxfoundation/archive.h"
#include "vxfoundation/exception.h"
#include "vxfoundation/status.h"

namespace {

using vxClassifierDefs::BadFeatures;
using vxClassifierDefs::BadIndex;
using vxClassifierDefs::BadLabel;
using vxClassifierDefs::BadMethod;
using vxClassifierDefs::BadParams;
using vxClassifierDefs::Errors;
using vxClassifierDefs::InsufficientTrainData;
using vxClassifierDefs::NotImplemented;
using vxClassifierDefs::NotTrained;

static_assert(std::is_abstract_v<Errors>);
static_assert(std::is_copy_constructible_v<BadParams>);
static_assert(!std::is_constructible_v<Errors, std::wstring>);
static_assert(std::is_base_of_v<vxExceptionWithString, Errors>);
static_assert(std::is_same_v<decltype(std::declval<const BadParams&>().errorNumber()), long>);

struct Known {
  const char* name;
  long number;
};

// Hosts report these numbers: none may ever change.
constexpr Known kKnown[] = {
    {"vxClassifierDefs::BadParams", 268452352},
    {"vxClassifierDefs::NotTrained", 268452353},
    {"vxClassifierDefs::BadIndex", 268452354},
    {"vxClassifierDefs::BadLabel", 268452355},
    {"vxClassifierDefs::BadMethod", 268452356},
    {"vxClassifierDefs::NotImplemented", 268452357},
    {"vxClassifierDefs::BadFeatures", 268452358},
    {"vxClassifierDefs::InsufficientTrainData", 268452359},
};

const std::string kErrorsName = "vxClassifierDefs::Errors";

/// A wide letter and a zero inside, which a narrow or a terminated string would lose.
const std::wstring kText(L"k\u00e9\0\u4e2d", 4);

template <class Leaf>
class ErrorsTest : public testing::Test {
 protected:
  static std::string name() { return vfClassName(typeid(Leaf)); }
  static long number() {
    for (const Known& known : kKnown) {
      if (name() == known.name) return known.number;
    }
    ADD_FAILURE() << name() << " is not known";
    return 0;
  }

  /// The bytes of the two levels, followed by those of the message.
  static std::string leafBytes() {
    return fromHex(
        "00 00 00"
        "04000000"
        "6b000000 e9000000 00000000 2d4e0000");
  }

  /// The leaf with its versioned entry in reach.
  struct Opened : Leaf {
    using Leaf::Leaf;
    void serialize(vxArchive& archive, unsigned char version) {
      Leaf::serialize_(archive, version);
    }
    void serializeErrors(vxArchive& archive, unsigned char version) {
      Errors::serialize_(archive, version);
    }
  };
};

using Leaves = testing::Types<BadParams, NotTrained, BadIndex, BadLabel, BadMethod, NotImplemented,
                              BadFeatures, InsufficientTrainData>;
TYPED_TEST_SUITE(ErrorsTest, Leaves, ClassNames);

TYPED_TEST(ErrorsTest, HasItsNumberAndNoMessageByDefault) {
  const TypeParam error;
  EXPECT_EQ(error.errorNumber(), this->number());
  EXPECT_EQ(error.message(), L"");
  EXPECT_EQ(TypeParam().message(false), L"");
}

TYPED_TEST(ErrorsTest, CarriesItsMessage) {
  const TypeParam error(kText);
  EXPECT_EQ(error.message(), kText);
  EXPECT_EQ(error.errorNumber(), this->number());
  std::wostringstream written;
  error.message_(written);
  EXPECT_EQ(written.str(), kText);
}

TYPED_TEST(ErrorsTest, PutsItsNumberInFrontOnDemand) {
  std::wostringstream number;
  number << L"0x" << std::hex << this->number() << L": text";
  EXPECT_EQ(TypeParam(L"text").message(true), number.str());
}

TYPED_TEST(ErrorsTest, CopiesItsMessage) {
  const TypeParam error(L"first");
  TypeParam copy(error);
  EXPECT_EQ(copy.message(), L"first");
  EXPECT_EQ(copy.errorNumber(), this->number());
  copy = TypeParam(L"second");
  EXPECT_EQ(copy.message(), L"second");
  EXPECT_EQ(error.message(), L"first");
  const TypeParam& same = copy;
  copy = same;
  EXPECT_EQ(copy.message(), L"second");
}

TYPED_TEST(ErrorsTest, ConvertsNoStringByItself) {
  EXPECT_FALSE((std::is_convertible_v<std::wstring, TypeParam>));
}

TYPED_TEST(ErrorsTest, IsCaughtAsEachOfItsBases) {
  EXPECT_THROW(throw TypeParam(), TypeParam);
  EXPECT_THROW(throw TypeParam(), Errors);
  EXPECT_THROW(throw TypeParam(), vxExceptionWithString);
  EXPECT_THROW(throw TypeParam(), vxException);
}

TYPED_TEST(ErrorsTest, RethrowsItselfByValueAndIsGone) {
  struct Counted : TypeParam {
    explicit Counted(int* deaths) : TypeParam(L"heap"), deaths_(deaths) {}
    ~Counted() override { ++*deaths_; }
    int* deaths_;
  };
  int deaths = 0;
  auto* const error = new Counted(&deaths);
  expectThrows<TypeParam>([error] { error->suicideAndRethrow(); }, L"heap", this->number());
  EXPECT_EQ(deaths, 1) << "the heap object is freed through its virtual destructor";

  vxException* const another = new TypeParam(L"again");
  EXPECT_THROW(another->suicideAndRethrow(), Errors);
}

TYPED_TEST(ErrorsTest, IsArchivedAsTwoVersionBytesAndItsMessage) {
  TypeParam error(kText);
  // The third byte is the version of the foundation's own level.
  EXPECT_EQ(storedHex(error), toHex(this->leafBytes()));
}

TYPED_TEST(ErrorsTest, IsMadeAnewByAnArchive) {
  const TypeParam error(kText);
  std::ostringstream out(std::ios::binary);
  vxOutputArchive output(out);
  vxPersistent* object = nullptr;
  vxPersistent::serializePointer(output, &error, object);

  std::istringstream in(out.str(), std::ios::binary);
  {
    vxInputArchive input(in);
    vxPersistent::serializePointer(input, nullptr, object);
  }
  const std::unique_ptr<vxPersistent> owned(object);
  const auto* const loadedError = dynamic_cast<const TypeParam*>(object);
  ASSERT_NE(loadedError, nullptr);
  EXPECT_EQ(typeid(*loadedError), typeid(TypeParam));
  EXPECT_EQ(loadedError->message(), kText);
}

TYPED_TEST(ErrorsTest, IsRaisedAgainAfterAnArchive) {
  TypeParam error(L"stored");
  const std::string bytes = stored(error);
  auto heap = std::make_unique<TypeParam>();
  load(bytes, *heap);
  vxException* const raised = heap.release();
  expectThrows<TypeParam>([raised] { raised->suicideAndRethrow(); }, L"stored");
}

TYPED_TEST(ErrorsTest, NamesTheLevelWhoseVersionIsUnknown) {
  const std::string levels[] = {this->name(), kErrorsName};
  for (const char version : {'\x01', '\x7f', '\xff'}) {
    for (std::size_t level = 0; level < 2; ++level) {
      std::string bytes = this->leafBytes();
      bytes[level] = version;
      TypeParam target(L"before");
      expectUnknownVersion([&] { load(bytes, target); }, levels[level]);
      EXPECT_EQ(target.message(), L"before");
    }
  }
}

TYPED_TEST(ErrorsTest, NamesTheLeafWhereBothLevelsAreUnknown) {
  std::string bytes = this->leafBytes();
  bytes[0] = bytes[1] = '\x01';
  TypeParam target;
  expectUnknownVersion([&] { load(bytes, target); }, this->name());
}

TYPED_TEST(ErrorsTest, RefusesAnUnknownVersionInItsVersionedEntry) {
  std::ostringstream out(std::ios::binary);
  vxOutputArchive output(out);
  typename TestFixture::Opened error(kText);
  expectUnknownVersion([&] { error.serialize(output, 1); }, this->name());
  expectUnknownVersion([&] { error.serializeErrors(output, 255); }, kErrorsName);
  EXPECT_EQ(out.str(), "");

  error.serialize(output, 0);
  EXPECT_EQ(toHex(out.str()), toHex(this->leafBytes().substr(1)));
  out.str("");
  error.serializeErrors(output, 0);
  EXPECT_EQ(toHex(out.str()), toHex(this->leafBytes().substr(2)));
}

/// A status both as a long of 64 bits holds it unsigned, and sign-extended.
template <class Check>
void forBothSigns(std::uint32_t status, Check check) {
  check(static_cast<long>(status));
  check(static_cast<long>(static_cast<std::int32_t>(status)));
}

TEST(MathKernelStatusTest, BecomesInsufficientTrainDataWithoutSamples) {
  forBothSigns(0x80000B61u, [](long status) {
    expectThrows<InsufficientTrainData>([status] { vfThrowExceptionOnFailure(status); },
                                        L"No valid data has been used to train the distribution");
  });
}

TEST(MathKernelStatusTest, BecomesBadParamsForAnotherDimension) {
  forBothSigns(0x80000B62u, [](long status) {
    expectThrows<BadParams>(
        [status] { vfThrowExceptionOnFailure(status); },
        L"Must call clear before updating with feature vectors of different sizes");
  });
}

TEST(MathKernelStatusTest, IsLeftToTheFoundationForEveryOtherCode) {
  for (std::uint32_t code = 0; code < 32; ++code) {
    if (code == 1 || code == 2) continue;
    forBothSigns(0x80000B60u | code, [code](long status) {
      try {
        vfThrowExceptionOnFailure(status);
        ADD_FAILURE() << "nothing thrown for code " << code;
      } catch (const vxStatusException& error) {
        EXPECT_EQ(error.status(), status);
      }
    });
  }
}

TEST(MathKernelStatusTest, IsNoErrorForASuccess) {
  EXPECT_NO_THROW(vfThrowExceptionOnFailure(0x00000B61));
  EXPECT_NO_THROW(vfThrowExceptionOnFailure(0x00000B62));
}

TEST(MathKernelStatusTest, LeavesTheSameCodesOfOtherModulesAlone) {
  for (const std::uint32_t status : {0x80000B41u, 0x80000B82u, 0xC0000B61u}) {
    EXPECT_THROW(vfThrowExceptionOnFailure(static_cast<long>(status)), vxStatusException) << status;
  }
}

}  // namespace
