// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_ARCHIVED_SAMPLES_H_
#define TESTS_SUPPORT_ARCHIVED_SAMPLES_H_

#include <atomic>
#include <string>
#include <vector>

#include "vxfoundation/vxfoundation.h"

/// Persistent classes as a host would write them.
namespace samples {

/// A member of a list, whose objects are counted.
class Node : public vxPersistent, public vxRepBase {
 public:
  explicit Node(long label = 0, const vxPtrHandle<Node>& next = {});
  Node(const Node& other);
  Node& operator=(const Node& other) = default;
  ~Node() override;

  long label() const { return label_; }
  void label(long value);
  const vxPtrHandle<Node>& next() const { return next_; }
  void next(const vxPtrHandle<Node>& value);

  static int numAlive() { return alive_.load(); }
  /// A list of that many nodes, labelled from 1 at its head.
  static vxPtrHandle<Node> list(long length);

 protected:
  void dispatchSerialize(vxArchive& archive) override;

 private:
  static vxPersistent* make();
  static const vx_Instantiator sExemplar;
  static std::atomic<int> alive_;

  long label_;
  vxPtrHandle<Node> next_;
};

/// Its class name with the length before it, as an archive has it.
inline const std::string kNodeName = "0d000000 73616d706c65733a3a4e6f6465 ";

/// A virtual diamond; every level has one number.
class Base : public virtual vxPersistent, public virtual vxRepBase {
 public:
  long base = 1;

 protected:
  void dispatchSerialize(vxArchive& archive) override;
};
class Left : public virtual Base {
 public:
  long left = 2;

 protected:
  void dispatchSerialize(vxArchive& archive) override;
};
class Right : public virtual Base {
 public:
  long right = 3;

 protected:
  void dispatchSerialize(vxArchive& archive) override;
};
class Bottom : public Left, public Right {
 public:
  long bottom = 4;

 protected:
  void dispatchSerialize(vxArchive& archive) override;

 private:
  static vxPersistent* make() { return new Bottom; }
  static const vx_Instantiator sExemplar;
};

/// One field of every kind that an archive transfers.
class Everything : public vxPersistent, public vxRepBase {
 public:
  /// With a value in every field.
  static vxPtrHandle<Everything> filled();

  unsigned char byte = 0;
  long number = 0;
  unsigned long word = 0;
  double real = 0.0;
  std::wstring text;
  std::vector<bool> flags;
  std::vector<double> reals;
  std::vector<std::wstring> texts;
  vxNMMatrix matrix;
  vxRange range = vxRange::FullRange();
  Node inPlace;
  vxPtrHandle_const<Node> constant;
  std::vector<vxPtrHandle<Node>> nodes;
  vxPtrHandle<Bottom> diamond;

 protected:
  void dispatchSerialize(vxArchive& archive) override;

 private:
  static vxPersistent* make() { return new Everything; }
  static const vx_Instantiator sExemplar;
};

/// An error of a host: no count, and owned by whoever loads it. Its objects are counted.
class Trouble : public vxExceptionWithString {
 public:
  explicit Trouble(const std::wstring& message = std::wstring());
  Trouble(const Trouble& other);
  Trouble& operator=(const Trouble& other) = default;
  ~Trouble() override;
  long errorNumber() const override { return 0x20000001; }
  void suicideAndRethrow() override;

  static int numAlive() { return alive_.load(); }

 protected:
  void dispatchSerialize(vxArchive& archive) override;

 private:
  static vxPersistent* make() { return new Trouble; }
  static const vx_Instantiator sExemplar;
  static std::atomic<int> alive_;
};

}  // namespace samples

#endif  // TESTS_SUPPORT_ARCHIVED_SAMPLES_H_
