// SPDX-License-Identifier: MIT
#ifndef CLSS_CLASTOOL_CLASTOOL_RECORD_ARCHIVE_H_
#define CLSS_CLASTOOL_CLASTOOL_RECORD_ARCHIVE_H_

#include <utility>

#include "vxfoundation/archive.h"

/// What an UnknownVersion says of the record that refused: its source unit and a line.
struct vx_RecordSource {
  const char* unit;
  long line;
};

/// Transfers a value record: its version byte, then `fields` of the record, staged; `arguments`
/// make the record to load into.
template <class Record, class Fields, class... Arguments>
vxArchive& vx_transferRecord(vxArchive& archive, Record& record, const vx_RecordSource& source,
                             Fields&& fields, Arguments&&... arguments) {
  vx_Transfer transfer(archive);
  vfTransferVersion(archive, source.unit, source.line);
  vfTransferStaged(archive, record, fields, std::forward<Arguments>(arguments)...);
  transfer.complete();
  return archive;
}

#endif  // CLSS_CLASTOOL_CLASTOOL_RECORD_ARCHIVE_H_
