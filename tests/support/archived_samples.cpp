// SPDX-License-Identifier: MIT
#include "tests/support/archived_samples.h"

namespace samples {

const vx_Instantiator Node::sExemplar(typeid(Node), &Node::make);
const vx_Instantiator Bottom::sExemplar(typeid(Bottom), &Bottom::make);
const vx_Instantiator Everything::sExemplar(typeid(Everything), &Everything::make);
const vx_Instantiator Trouble::sExemplar(typeid(Trouble), &Trouble::make);

std::atomic<int> Node::alive_{0};
std::atomic<int> Trouble::alive_{0};

Node::Node(long label, const vxPtrHandle<Node>& next) : label_(label), next_(next) { ++alive_; }
Node::Node(const Node& other)
    : vxPersistent(other), vxRepBase(other), label_(other.label_), next_(other.next_) {
  ++alive_;
}
Node::~Node() { --alive_; }

void Node::label(long value) {
  label_ = value;
  mutating_();
}

void Node::next(const vxPtrHandle<Node>& value) {
  next_ = value;
  mutating_();
}

vxPtrHandle<Node> Node::list(long length) {
  vxPtrHandle<Node> head;
  for (long label = length; label > 0; --label) head.reset(new Node(label, head));
  return head;
}

void Node::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(Node), "samples::Node"}) {
    vxPersistent::dispatchSerialize(archive);
    archive || label_ || next_;
  }
}

vxPersistent* Node::make() { return new Node; }

void Base::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(Base), "samples::Base"}) {
    vxPersistent::dispatchSerialize(archive);
    archive || base;
  }
}

// The left side goes through the helper; the right one and the bottom do the same by hand.
void Left::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(Left), "samples::Left"}) {
    Base::dispatchSerialize(archive);
    archive || left;
  }
}

void Right::dispatchSerialize(vxArchive& archive) {
  if (haveVisited(this, typeid(Right))) return;
  setVisited(this, typeid(Right));
  unsigned char version = 0;
  archive || version;
  if (version != 0) throw vxArchive::UnknownVersion("samples::Right", 0);
  Base::dispatchSerialize(archive);
  archive || right;
}

void Bottom::dispatchSerialize(vxArchive& archive) {
  if (haveVisited(this, typeid(Bottom))) return;
  setVisited(this, typeid(Bottom));
  unsigned char version = 0;
  archive || version;
  if (version != 0) throw vxArchive::UnknownVersion("clss/bottom", 77);
  Left::dispatchSerialize(archive);
  Right::dispatchSerialize(archive);
  archive || bottom;
}

vxPtrHandle<Everything> Everything::filled() {
  const vxPtrHandle<Everything> object(new Everything);
  object->byte = 0xfe;
  object->number = -2;
  object->word = 0xfffffffd;
  object->real = 0x1.8p-3;
  object->text = std::wstring(L"a\0b", 3);
  object->flags = {true, false, true};
  object->reals = {1.0, -0.0};
  object->texts = {L"", L"x"};
  object->matrix = vxNMMatrix(1, 2);
  object->matrix.element(0, 1, 2.5);
  object->range = vxRange(-1.0, 1.0);
  object->inPlace.label(6);
  const vxPtrHandle<Node> shared(new Node(7));
  object->constant = shared;
  object->nodes = {shared, vxPtrHandle<Node>(), vxPtrHandle<Node>(new Node(8, shared)), shared};
  object->diamond.reset(new Bottom);
  return object;
}

void Everything::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(Everything), "samples::Everything"}) {
    vxPersistent::dispatchSerialize(archive);
    archive || byte || number || word || real || text || flags || reals || texts || matrix ||
        range || inPlace || constant || nodes || diamond;
  }
}

Trouble::Trouble(const std::wstring& message) : vxExceptionWithString(message) { ++alive_; }
Trouble::Trouble(const Trouble& other) : vxExceptionWithString(other) { ++alive_; }
Trouble::~Trouble() { --alive_; }

void Trouble::suicideAndRethrow() {
  const Trouble copy(*this);
  delete this;
  throw copy;
}

void Trouble::dispatchSerialize(vxArchive& archive) {
  if (const vx_ArchiveLevel level{archive, *this, typeid(Trouble), "samples::Trouble"}) {
    vxExceptionWithString::dispatchSerialize(archive);
  }
}

}  // namespace samples
