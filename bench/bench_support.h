// Files, lists and captured output for the benchmark programs.
#ifndef KX_BENCH_BENCH_SUPPORT_H
#define KX_BENCH_BENCH_SUPPORT_H

#include <stdlib.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "kx_input.h"
#include "kx_list.h"

namespace kx::bench {

// A temporary folder for generated templates, removed at the end.
class Files {
public:
    Files() {
        std::string pattern = (std::filesystem::temp_directory_path() / "kx-bench.XXXXXX").string();
        if (mkdtemp(pattern.data()) != nullptr) folder_ = pattern;
    }
    ~Files() {
        std::error_code ignored;
        if (!folder_.empty()) std::filesystem::remove_all(folder_, ignored);
    }
    Files(const Files &) = delete;
    Files &operator=(const Files &) = delete;

    std::string Write(const std::string &name, const std::string &content) const {
        const std::string path = folder_ + "/" + name;
        std::ofstream(path, std::ios::binary) << content;
        return path;
    }

private:
    std::string folder_;
};

// What work writes to the page stream.
template <typename Work>
std::string Capture(Work &&work) {
    char *data = nullptr;
    size_t size = 0;
    std::FILE *stream = open_memstream(&data, &size);
    std::FILE *saved = _Utilsfpout;
    _Utilsfpout = stream;
    work();
    _Utilsfpout = saved;
    std::fclose(stream);
    std::string text(data, size);
    std::free(data);
    return text;
}

}  // namespace kx::bench

#endif
