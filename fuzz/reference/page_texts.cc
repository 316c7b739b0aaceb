// The page text table: the pairs of the page's text file ("_txt_" entries).
#include "companion/libKXUtils.h"
#include "reference/invocation.h"

namespace kx::tmpl::reference {

PageTexts::~PageTexts() {
    if (pairs_ != nullptr) KXUtilsFreeResources(pairs_);
}

// A missing file leaves the table empty.
void PageTexts::Load(const std::string &path) {
    const int count = KXUtilsReadIniFile(path.c_str(), nullptr, 0, '.', nullptr, &pairs_, 0);
    count_ = (count > 0 && pairs_ != nullptr) ? count : 0;
}

}  // namespace kx::tmpl::reference
