// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/archive_helpers.h"
#include "vxfoundation/vxfoundation.h"

/// What a host adds to the library: an interface of its own and classes behind it.
namespace host {

class Shape : public virtual vxPersistent, public virtual vxRepBase {
 public:
  virtual double area() const = 0;
  virtual vxPtrHandle<Shape> clone() const = 0;

  std::wstring name;

 protected:
  void dispatchSerialize(vxArchive& archive) override {
    if (const vx_ArchiveLevel level{archive, *this, typeid(Shape), "host::Shape"}) {
      vxPersistent::dispatchSerialize(archive);
      archive || name;
    }
  }
};

class Square : public Shape {
 public:
  explicit Square(double theSide = 0.0) : side(theSide) {}
  double area() const override { return side * side; }
  vxPtrHandle<Shape> clone() const override { return vxPtrHandle<Square>(new Square(*this)); }

  double side;

 protected:
  void dispatchSerialize(vxArchive& archive) override {
    if (const vx_ArchiveLevel level{archive, *this, typeid(Square), "host::Square"}) {
      Shape::dispatchSerialize(archive);
      archive || side;
    }
  }

 private:
  static vxPersistent* make() { return new Square; }
  static const vx_Instantiator sExemplar;
};
const vx_Instantiator Square::sExemplar(typeid(Square), &Square::make);

class Group : public Shape {
 public:
  double area() const override {
    double sum = 0.0;
    for (const vxPtrHandle_const<Shape>& member : members) sum += member->area();
    return sum;
  }
  vxPtrHandle<Shape> clone() const override { return vxPtrHandle<Group>(new Group(*this)); }

  std::vector<vxPtrHandle_const<Shape>> members;

 protected:
  void dispatchSerialize(vxArchive& archive) override {
    if (const vx_ArchiveLevel level{archive, *this, typeid(Group), "host::Group"}) {
      Shape::dispatchSerialize(archive);
      archive || members;
    }
  }

 private:
  static vxPersistent* make() { return new Group; }
  static const vx_Instantiator sExemplar;
};
const vx_Instantiator Group::sExemplar(typeid(Group), &Group::make);

/// Derives plainly, and keeps the base's archived form.
class Badge : public vxPersistent, public vxRepBase {
 public:
  long number = 0;
  bool wasReInitialised = false;

  void reInit() override { wasReInitialised = true; }
  void loadSimple(vxArchive& archive) override { archive || number; }

 protected:
  void dispatchSerialize(vxArchive& archive) override {
    if (const vx_ArchiveLevel level{archive, *this, typeid(Badge)}) archive || number;
  }

 private:
  static vxPersistent* make() { return new Badge; }
  static const vx_Instantiator sExemplar;
};
const vx_Instantiator Badge::sExemplar(typeid(Badge), &Badge::make);

/// A value record with no more than a free operator.
struct Point {
  double x = 0.0;
  double y = 0.0;
};
vxArchive& operator||(vxArchive& archive, Point& point) { return archive || point.x || point.y; }

}  // namespace host

namespace {

using host::Badge;
using host::Group;
using host::Shape;
using host::Square;

vxPtrHandle<Shape> pairOfOneSquare() {
  const vxPtrHandle<Square> square(new Square(3.0));
  square->name = L"square";
  const vxPtrHandle<Group> group(new Group);
  group->name = L"pair";
  group->members = {square, square};
  return group;
}

TEST(HostClassTest, IsArchivedThroughAHandleToItsInterface) {
  vxPtrHandle<Shape> source = pairOfOneSquare();
  const auto read = loaded<vxPtrHandle<Shape>>(stored(source));
  ASSERT_TRUE(read);
  EXPECT_EQ(read->name, L"pair");
  EXPECT_EQ(read->area(), 18.0);
  const auto& group = dynamic_cast<const Group&>(*read);
  EXPECT_TRUE(group.members[0] == group.members[1]);
  EXPECT_EQ(group.members[0]->name, L"square");
}

TEST(HostClassTest, StandsInTheArchiveUnderItsOwnName) {
  vxPtrHandle<Shape> source = pairOfOneSquare();
  const std::string bytes = stored(source);
  EXPECT_NE(bytes.find("host::Group"), std::string::npos);
  EXPECT_EQ(bytes.find("host::Square"), bytes.rfind("host::Square"));
}

TEST(HostClassTest, IsClonedAndCopiedAsAnObjectOfItsOwn) {
  const vxPtrHandle<Shape> source = pairOfOneSquare();
  const vxPtrHandle<Shape> copy = source->clone();
  EXPECT_FALSE(copy == source);
  EXPECT_EQ(copy->referenceCount(), 1);
  EXPECT_EQ(copy->area(), 18.0);
}

TEST(HostClassTest, MayOverrideReInitAndLoadSimple) {
  Badge badge;
  vxPersistent& persistent = badge;
  persistent.reInit();
  EXPECT_TRUE(badge.wasReInitialised);

  std::istringstream stream(fromHex("2a000000"), std::ios::binary);
  vxInputArchive archive(stream);
  persistent.loadSimple(archive);
  EXPECT_EQ(badge.number, 42);
}

TEST(HostClassTest, RefusesAnotherVersionWithoutANameWhereItGivesNone) {
  Badge badge;
  badge.number = 5;
  try {
    load(fromHex("07 2a000000"), badge);
    ADD_FAILURE();
  } catch (const vxArchive::UnknownVersion& error) {
    EXPECT_EQ(error.name(), "");
    EXPECT_EQ(error.number(), 0);
  }
  EXPECT_EQ(badge.number, 5);
}

TEST(HostClassTest, OfAnotherInterfaceGivesAnEmptyHandle) {
  vxPtrHandle<Badge> badge(new Badge);
  EXPECT_TRUE(loaded<vxPtrHandle<Shape>>(stored(badge)).isNull());
}

TEST(HostClassTest, MayLiveOnTheStack) {
  Square square(2.0);
  square.name = L"s";
  Square target;
  load(stored(square), target);
  EXPECT_EQ(target.side, 2.0);
  EXPECT_EQ(target.name, L"s");
}

TEST(HostRecordTest, IsArchivedByItsFreeOperatorAloneAndInVectors) {
  std::vector<host::Point> points = {{1.0, 2.0}, {3.0, 4.0}};
  const std::string bytes = stored(points);
  EXPECT_EQ(bytes.size(), 1u + 4u + 2u * 16u);
  EXPECT_EQ(loaded<std::vector<host::Point>>(bytes)[1].y, 4.0);
}

}  // namespace
