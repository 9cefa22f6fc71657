// SPDX-License-Identifier: MIT
#ifndef CLSS_CLASTOOL_CLASTOOL_RECORD_ARCHIVE_H_
#define CLSS_CLASTOOL_CLASTOOL_RECORD_ARCHIVE_H_

#include <utility>

#include "vxfoundation/archive.h"

/// Transfers a value record: its version byte, then `fields` of the record, staged. `line` tells
/// in an UnknownVersion which record refused; `arguments` make the record to load into.
template <class Record, class Fields, class... Arguments>
vxArchive& vx_transferRecord(vxArchive& archive, Record& record, long line, Fields&& fields,
                             Arguments&&... arguments) {
  vx_Transfer transfer(archive);
  vfTransferVersion(archive, "clss/clastool/clastool", line);
  vfTransferStaged(archive, record, fields, std::forward<Arguments>(arguments)...);
  transfer.complete();
  return archive;
}

#endif  // CLSS_CLASTOOL_CLASTOOL_RECORD_ARCHIVE_H_
