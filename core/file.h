// A FILE that closes itself.
#ifndef KX_CORE_FILE_H
#define KX_CORE_FILE_H

#include <cstdio>
#include <memory>

namespace kx::core {

struct FileCloser {
    void operator()(std::FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

}  // namespace kx::core

#endif
