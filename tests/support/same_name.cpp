// SPDX-License-Identifier: MIT
#include "tests/support/same_name.h"

#include <string>

#include "vxfoundation/archive.h"

namespace {

class Twin : public vxPersistent, public vxRepBase {
 protected:
  void dispatchSerialize(vxArchive& archive) override {
    if (const vx_ArchiveLevel level{archive, *this, typeid(Twin)}) archive || text_;
  }

 private:
  std::wstring text_ = L"another class";
};

}  // namespace

vxPtrHandle<vxRepBase> otherTwin() { return vxPtrHandle<vxRepBase>(new Twin); }

vxPersistent* persistentOf(const vxPtrHandle<vxRepBase>& twin) {
  return dynamic_cast<vxPersistent*>(twin.get());
}
