// ErsetzeUndGebeHtmlDateiAus: set-up, reading the template into logical
// lines, and the end of the input.
#include <algorithm>
#include <functional>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "companion/libKXUtils.h"
#include "core/entry.h"
#include "core/file.h"
#include "core/html_escape.h"
#include "core/messages.h"
#include "core/text.h"
#include "kx_profile.h"
#include "kx_template.h"
#include "template/invocation.h"
#include "template/nesting.h"

namespace kx::tmpl {
using namespace kx::core;
namespace {

// A "{" followed by one of these opens a placeholder that must end on the
// logical line; any other character (a JavaScript brace) ends the scan.
bool OpensPlaceholder(char next) {
    return (next >= 'a' && next <= 'z') || (next >= 'A' && next <= 'Z') ||
           (next >= '0' && next <= '9') || next == '_' || next == '-' || next == '=' ||
           next == '/';
}

// The alert for an unfinished placeholder shows this many bytes of it.
constexpr size_t kAlertPendingLength = 20;
// Room for a message about an unfinished placeholder; a longer one is cut.
constexpr size_t kReportSize = 2048;
// A read needs room for one byte and its NUL.
constexpr size_t kLeastReadSpace = 2;

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

// Keeps _InCreateValueFromControl as the caller had it.
class ControlFlagGuard {
public:
    ControlFlagGuard() : saved_(_InCreateValueFromControl) { _InCreateValueFromControl = 0; }
    ~ControlFlagGuard() { _InCreateValueFromControl = saved_; }
    ControlFlagGuard(const ControlFlagGuard &) = delete;
    ControlFlagGuard &operator=(const ControlFlagGuard &) = delete;

private:
    int saved_;
};

void TakeMarkers(Invocation &inv) {
    const char *start = CurrentTextAt(inv.pCount, inv.pList, inv.startIndex);
    const char *end = CurrentTextAt(inv.pCount, inv.pList, inv.endIndex);
    inv.markersDefined = start != nullptr && *start != '\0' && end != nullptr && *end != '\0';
    if (!inv.markersDefined) return;
    inv.startMarker = start;
    inv.endMarker = end;
}

void AllocateLine(Invocation &inv, size_t inputSize) {
    inv.line.Reserve(std::max(kLineBufferMinimum, inputSize + kLineBufferHeadroom));
    inv.line[0] = '\0';
}

// The entry of one of the call's settings, through the call's name index:
// on a long list the index serves the page's placeholders too, instead of a
// walk of the list per setting.
int SettingIndex(Invocation &inv, std::string_view name) {
    if (*inv.pList == nullptr) return *inv.pCount;
    return inv.names.Find(*inv.pList, *inv.pCount, name);
}

// "EscapeHtml": only the definition's default counts, so that no request can
// turn the escaping off.
bool EscapeHtmlWanted(Invocation &inv) {
    const int index = SettingIndex(inv, "EscapeHtml");
    if (index >= *inv.pCount) return false;
    const char *text = (*inv.pList)[index].Vorgabe;
    return text != nullptr && (*text == 'y' || *text == 'Y');
}

// "DeleteCopyright": Wert when it is set and not empty, else Vorgabe.
bool DeleteCopyrightWanted(Invocation &inv) {
    const int index = SettingIndex(inv, "DeleteCopyright");
    if (index >= *inv.pCount) return false;
    const char *text = SettingText((*inv.pList)[index]);
    return text != nullptr && (*text == 'y' || *text == 'Y');
}

// The page text file: "<dir>ini/<base up to the first '.'>.ini".
std::string PageTextPath(const std::string &path) {
    const char *base = HTMLBasename(path.c_str());
    const char *dot = std::strchr(base, '.');
    if (dot == nullptr) return {};
    return std::string(path.c_str(), base) + "ini" + Verzeichnistrenner + std::string(base, dot) +
           ".ini";
}

// Each pair becomes the entry "_txt_<name>" with the value as its default.
void DeclarePageTexts(Invocation &inv) {
    const std::string textPath = PageTextPath(inv.path);
    if (textPath.empty()) return;
    inv.pageTexts.Load(textPath);
    for (int i = 0; i < inv.pageTexts.Count(); ++i) {
        const std::string key = std::string("_txt_") + inv.pageTexts.Name(i);
        // The decoding changes only "%" escapes and "+": a key without them
        // is declared as it stands.
        if (key.find_first_of("%+") == std::string::npos) {
            AppendToEingabe(inv.pCount, inv.pList, kListDivider, key.c_str(), 1, inv.pageTexts.Value(i));
            continue;
        }
        const HeapText decoded(ServerDecoding(key.c_str()));
        if (!decoded) continue;
        AppendToEingabe(inv.pCount, inv.pList, kListDivider, decoded.Get(), 1, inv.pageTexts.Value(i));
    }
}

// The part of a logical line read so far: [0, writePos) is complete, then
// pending bytes of an unfinished placeholder.
struct LineCursor {
    size_t writePos = 0;
    size_t pending = 0;
};

enum class Read { Piece, End, Abort, Full };

// The first line of a template whose copyright comment is removed is read
// straight from the stream, which the removal goes on reading.
Read ReadFirstWithoutComment(Invocation &inv, FILE *in) {
    inv.deleteCopyright = false;
    char *place = inv.line.data();
    const size_t space = inv.line.size();
    if (std::fgets(place, static_cast<int>(std::min<size_t>(space, INT32_MAX)), in) == nullptr)
        return Read::End;
    const int skipped = DeleteComment(in, place, static_cast<int>(std::min<size_t>(space, INT32_MAX)));
    if (skipped == -1) return Read::Abort;
    if (skipped > 0) inv.lineCounter += skipped;
    return Read::Piece;
}

Read ReadPiece(Invocation &inv, TemplateReader *reader, const char *text, size_t at) {
    if (reader == nullptr) {
        if (inv.line.size() - at < kLeastReadSpace) return Read::Full;
        if (inv.passes > 0 || at > 0 || text == nullptr) return Read::End;
        inv.passes = 1;
        // The line buffer is sized from the text, NUL included.
        std::memcpy(inv.line.data() + at, text, std::strlen(text) + 1);
    } else if (inv.deleteCopyright) {
        const Read first = ReadFirstWithoutComment(inv, reader->Stream());
        if (first != Read::Piece) return first;
    } else if (!reader->ReadLine(inv.line, at)) {
        return Read::End;
    }
    ++inv.lineCounter;
    return Read::Piece;
}

// A continuation loses its leading blanks and line breaks and follows the
// pending text directly. False when nothing but blanks was read.
bool JoinPiece(Invocation &inv, size_t at) {
    char *piece = inv.line.data() + at;
    char *rest = piece;
    while (IsBlank(*rest)) ++rest;
    if (*rest == '\0') return false;
    std::memmove(piece, rest, std::strlen(rest) + 1);
    return true;
}

// True when the logical line holds no unfinished placeholder.
bool ScanComplete(Invocation &inv, LineCursor &cursor) {
    char *buffer = inv.line.data();
    for (;;) {
        char *brace = std::strchr(buffer + cursor.writePos, '{');
        if (brace == nullptr || !OpensPlaceholder(brace[1]) || !inv.markersDefined) return true;
        const char *plain = BraceMarkers(inv) ? PlainEnd(brace) : nullptr;
        const char *match = plain != nullptr ? plain : PairIt(brace, inv.startMarker.c_str(), inv.endMarker.c_str());
        if (match == brace) break;
        cursor.writePos = static_cast<size_t>(match - buffer) + inv.endMarker.size();
        cursor.pending = 0;
        inv.lineStart = inv.lineCounter - 1;
    }
    size_t length = std::strlen(buffer + cursor.writePos);
    while (length > 0 && IsBlank(buffer[cursor.writePos + length - 1])) --length;
    cursor.pending = length;
    return false;
}

std::string PendingText(const Invocation &inv, const LineCursor &cursor) {
    return std::string(inv.line.data() + cursor.writePos, cursor.pending);
}

// The input ended inside a placeholder: a message instead of the text.
void ReportUnfinished(Invocation &inv, const LineCursor &cursor) {
    const std::string pending = PendingText(inv, cursor);
    char head[kReportSize];
    if (inv.stringMode) {
        const int n = std::snprintf(head, sizeof head, MessageText(PageMessage::UnfinishedHead), inv.lineStart);
        inv.Write(std::string_view(head, static_cast<size_t>(n)));
        inv.Write(pending);
        inv.Write(MessageText(PageMessage::UnfinishedTail));
        return;
    }
    const size_t brace = pending.find('{');
    std::string shown = pending.substr(brace == std::string::npos ? 0 : brace, kAlertPendingLength);
    const std::string quoted = ReplaceAll(shown, "\"", "\\\"");
    std::snprintf(head, sizeof head, MessageText(PageMessage::UnfinishedAlert), inv.lineStart, quoted.c_str());
    inv.Write(head);
}

// Reads the pieces of one logical line. False at the end of the input.
bool ReadLogicalLine(Invocation &inv, TemplateReader *in, const char *text) {
    LineCursor cursor;
    inv.lineStart = inv.lineCounter;
    for (;;) {
        const Read got = ReadPiece(inv, in, text, cursor.writePos + cursor.pending);
        if (got == Read::Abort) return false;
        if (got == Read::End) {
            if (cursor.pending > 0) ReportUnfinished(inv, cursor);
            return false;
        }
        // A logical line that fills the buffer is processed as it stands.
        if (got == Read::Full) return true;
        if (cursor.pending > 0 && !JoinPiece(inv, cursor.writePos + cursor.pending)) continue;
        if (ScanComplete(inv, cursor)) return true;
    }
}

// At the page's own level, with no IF withholding text, whole lines that
// cannot open a placeholder are written as they stand, without a pass over
// each line.
bool CopyPlainLines(Invocation &inv, TemplateReader &in) {
    if (inv.cycle.level != 0 || inv.Current().skip || inv.ifPrefix || inv.deleteCopyright) return false;
    int lines = 0;
    const std::string_view run = in.TakePlainLines('{', inv.markersDefined ? inv.startMarker[0] : '{', &lines);
    if (run.empty()) return false;
    // A run is most of a read block: it goes to the page without a copy.
    inv.page->WriteThrough(run);
    inv.lineCounter += lines;
    return true;
}

void Run(Invocation &inv, TemplateReader *in, const char *text) {
    for (;;) {
        while (in != nullptr && CopyPlainLines(inv, *in)) {}
        if (!ReadLogicalLine(inv, in, text)) return;
        ProcessText(inv, inv.line.data());
        ++inv.passes;
        if (inv.stringMode) return;
    }
}

// A page of another name than its application's gives the user an id. The
// names' last characters are not compared.
void CheckUserId(Invocation &inv) {
    const int index = SettingIndex(inv, "Application");
    const char *current = CurrentTextAt(inv.pCount, inv.pList, index);
    const std::string application(current != nullptr ? current : "");
    const std::string_view app = KXUtilsBasename(application.c_str(), 0);
    const std::string_view page = HTMLBasename(inv.path.c_str());
    const size_t pageLength = std::min(page.find('.'), page.size());
    if (app.size() != pageLength || (pageLength > 0 && app.substr(0, pageLength - 1) != page.substr(0, pageLength - 1)))
        CreateUID(*inv.pCount, *inv.pList);
}

void RunFile(Invocation &inv) {
    inv.page.emplace();
    const long size = KXUtilsFileSize(inv.path.c_str());
    AllocateLine(inv, 0);
    CheckUserId(inv);
    DeclarePageTexts(inv);
    TakeMarkers(inv);
    File in(std::fopen(inv.path.c_str(), "r"));
    if (in == nullptr) {
        // The name may come from the request: it is shown escaped.
        std::fprintf(_Utilsfpout != nullptr ? _Utilsfpout : stdout,
                     MessageText(PageMessage::TemplateNotOpened), core::HtmlEscaped(inv.path).c_str());
        return;
    }
    inv.deleteCopyright = DeleteCopyrightWanted(inv);
    // The comment's removal reads the first lines with fgets, into a buffer
    // that holds any line of the file.
    if (inv.deleteCopyright) AllocateLine(inv, size > 0 ? static_cast<size_t>(size) : 0);
    inv.escapeHtml = EscapeHtmlWanted(inv);
    TemplateReader reader(in.get(), size);
    Run(inv, &reader, nullptr);
}

void RunString(Invocation &inv, const char *text) {
    AllocateLine(inv, std::strlen(text));
    TakeMarkers(inv);
    if (!inv.markersDefined || std::strstr(text, inv.startMarker.c_str()) == nullptr) return;
    Run(inv, nullptr, text);
}

}  // namespace

int Invocation::CycleIndex() const {
    if (fixedCycleIndex >= 0) return fixedCycleIndex;
    return cycle.level > 0 ? cycle.levels[cycle.level].counter : -1;
}

void Invocation::Write(std::string_view piece) {
    if (stringMode) {
        output.append(piece);
        produced = true;
        return;
    }
    page->Write(piece);
}

namespace {

// The last start of word in text[0, length), found from the end: memrchr
// looks for the word's byte at key, chosen so that a line full of "<", "/"
// or "{" does not stop at each of them.
const char *LastOf(const char *text, size_t length, std::string_view word, size_t key) {
    if (length < word.size()) return nullptr;
    size_t starts = length - word.size() + 1;
    while (starts > 0) {
        const auto *hit = static_cast<const char *>(memrchr(text + key, word[key], starts));
        if (hit == nullptr) return nullptr;
        const size_t start = static_cast<size_t>(hit - text) - key;
        if (std::memcmp(text + start, word.data(), word.size()) == 0) return text + start;
        starts = start;
    }
    return nullptr;
}

}  // namespace

char *Invocation::StartText(char *text, LineForm *kept) {
    textStart = text;
    lastsKnown = false;
    form = kept;
    return text;
}

void Invocation::FindLasts() {
    if (lastsKnown) return;
    lastsKnown = true;
    if (form != nullptr && form->lastsKnown) {
        lastDefine = form->lastDefine < 0 ? nullptr : textStart + form->lastDefine;
        lastIfComment = form->lastIfComment < 0 ? nullptr : textStart + form->lastIfComment;
        return;
    }
    const size_t length = std::strlen(textStart);
    // The comments' "I" (at 3) is rarer in a page than their "<", "/" or "{".
    constexpr size_t kCommentIf = 3;
    lastDefine = LastOf(textStart, length, "DEFINE", 0);
    lastIfComment = std::max(LastOf(textStart, length, kIfComment, kCommentIf),
                             LastOf(textStart, length, kIfScriptComment, kCommentIf), std::less<>());
    if (form == nullptr) return;
    form->lastsKnown = true;
    form->lastDefine = lastDefine == nullptr ? -1 : lastDefine - textStart;
    form->lastIfComment = lastIfComment == nullptr ? -1 : lastIfComment - textStart;
}

void Invocation::ClearName() {
    std::free(name.Liste);
    name = {};
}

}  // namespace kx::tmpl

extern "C" void ErsetzeUndGebeHtmlDateiAus(const char *nameOrText, char **result, int startIndex,
                                           int endIndex, int *pCount, EingabeElement **pList) {
    using namespace kx::tmpl;
    ControlFlagGuard flag;
    NestingGuard nesting;
    if (result != nullptr && nesting.TooDeep()) {
        *result = nullptr;
        return;
    }
    auto inv = std::make_unique<Invocation>();
    inv->stringMode = result != nullptr;
    inv->startIndex = startIndex;
    inv->endIndex = endIndex;
    inv->pCount = pCount;
    inv->pList = pList;
    if (result != nullptr) {
        inv->fixedCycleIndex = static_cast<int>(reinterpret_cast<intptr_t>(*result));
        *result = nullptr;
    }
    if (nameOrText == nullptr || pCount == nullptr || pList == nullptr) return;
    if (inv->stringMode) {
        RunString(*inv, nameOrText);
        if (inv->produced) *result = HeapCopy(inv->output);
    } else {
        inv->path = nameOrText;
        RunFile(*inv);
    }
    inv->ClearName();
}
