// The page text table: the pairs of the page's text file ("_txt_" entries),
// a name in a section as "<section>.<name>". Every page reads its text file:
// it is read here, with the pair reader KXUtilsReadIniFile uses, which
// spares the call into the companion and the companion's first calls into
// the C library.
#include <cstdlib>
#include <list>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file_text.h"
#include "platform/ini_pairs.h"
#include "platform/text_block.h"
#include "template/invocation.h"

namespace kx::tmpl {

PageTexts::~PageTexts() { std::free(pairs_); }

// A missing file leaves the table empty.
void PageTexts::Load(const std::string &path) {
    platform::FileText file;
    if (!file.Read(path.c_str())) return;
    std::list<std::string> joined;
    const std::vector<std::string_view> texts = platform::IniTexts(file.View(), nullptr, '.', nullptr, joined);
    if (texts.empty()) return;
    pairs_ = platform::PackTexts(texts);
    count_ = pairs_ != nullptr ? static_cast<int>(texts.size() / 2) : 0;
}

}  // namespace kx::tmpl
