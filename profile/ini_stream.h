// A stdio stream on a file that is only ever replaced whole.
#ifndef KX_PROFILE_INI_STREAM_H
#define KX_PROFILE_INI_STREAM_H

#include <cstdio>
#include <memory>
#include <string>

#include "core/file_lock.h"

namespace kx::profile {

// A write stream whose every flush replaces the file at path by content
// plus all written so far (temporary sibling, fsync, rename); fclose
// flushes, then releases the lock. Null when no stream can be made (the
// lock is then released at once).
std::FILE *OpenReplacingStream(std::string path, std::string content, std::unique_ptr<core::FileLock> lock);

}  // namespace kx::profile

#endif
