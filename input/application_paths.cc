// Decoding, entry texts and the application directory.
#include <algorithm>
#include <cstdlib>

#include "companion/libKXUtils.h"
#include "input/request_internal.h"

namespace kx::request {

void UnifySeparators(std::string &path) {
    const char replacement = SeparatorCharacter();
    std::replace_if(path.begin(), path.end(), [](char ch) { return ch == '/' || ch == '\\'; },
                    replacement);
}

std::string Decoded(const char *text) {
    char *decoded = ServerDecoding(text);
    if (decoded == nullptr) return {};
    std::string result(decoded);
    std::free(decoded);
    return result;
}

bool IsEntry(int index, int count) { return index >= 0 && index < count; }

std::string_view CurrentText(const EingabeElement *list, int count, int index) {
    if (list == nullptr || !IsEntry(index, count)) return {};
    const EingabeElement &entry = list[index];
    if (entry.Wert != nullptr) return entry.Wert + entry.WertPosition;
    return entry.Vorgabe != nullptr ? std::string_view(entry.Vorgabe) : std::string_view();
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
