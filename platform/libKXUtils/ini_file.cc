// Reading ini files: the file is read in one piece, its pairs (as
// platform/ini_pairs.h reads them) stay views into it until they are packed.
#include <list>
#include <string>
#include <string_view>
#include <vector>

#include "companion/libKXUtils.h"
#include "platform/file_text.h"
#include "platform/ini_pairs.h"
#include "platform/text_block.h"

extern "C" int KXUtilsReadIniFile(const char *path, const char *section, int /*flags*/,
                                  char separator, const char *key, char ***pairs,
                                  int /*reserved*/) {
    if (pairs != nullptr) *pairs = nullptr;
    kx::platform::FileText content;
    if (path == nullptr || !content.Read(path)) return -1;
    std::list<std::string> joined;
    const std::vector<std::string_view> texts = kx::platform::IniTexts(content.View(), section, separator, key, joined);
    const int count = static_cast<int>(texts.size() / 2);
    if (count == 0 || pairs == nullptr) return count;
    *pairs = kx::platform::PackTexts(texts);
    return *pairs != nullptr ? count : -1;
}
