// Decoding, entry texts and the application directory.
#include <algorithm>
#include <cstdlib>

#include "companion/libKXUtils.h"
#include "core/entry.h"
#include "input/request_internal.h"

namespace kx::request {

void UnifySeparators(std::string &path) {
    const char replacement = SeparatorCharacter();
    std::replace_if(path.begin(), path.end(), [](char ch) { return ch == '/' || ch == '\\'; },
                    replacement);
}

bool IsEntry(int index, int count) { return index >= 0 && index < count; }

std::string_view CurrentText(const EingabeElement *list, int count, int index) {
    if (list == nullptr || !IsEntry(index, count)) return {};
    const char *text = core::CurrentText(list[index]);
    return text != nullptr ? std::string_view(text) : std::string_view();
}

std::string ApplicationDirectory(const EingabeElement *list, int count) {
    std::string directory;
    const auto addPiece = [&](int index, std::string_view piece) {
        if (!IsEntry(index, count)) return;
        directory.append(piece).append(Separator());
    };
    addPiece(iRootPath, CurrentText(list, count, iRootPath));
    addPiece(iRootDirectory, CurrentText(list, count, iRootDirectory));
    // The application name may come from the request: its directory part,
    // such as "../../etc", must not move the application directory.
    const std::string application(CurrentText(list, count, iApplication));
    addPiece(iApplication, KXUtilsBasename(application.c_str(), 0));
    return directory;
}

}  // namespace kx::request
