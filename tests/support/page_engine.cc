#include "support/page_engine.h"

#include <cstdint>
#include <cstring>

namespace kx::test {

void PageEngine::SetUp() {
    list_.Add("Ersetzungsanfang", 'n', "{");
    list_.Add("Ersetzungsende", 'n', "}");
    iErsetzungsAnfang = 0;
    iErsetzungsEnde = 1;
    _pEingabe = &list_.list();
    _pEingabeAnzahl = &list_.count();
}

void PageEngine::TearDown() {
    iErsetzungsAnfang = -1;
    iErsetzungsEnde = -1;
    list_.Clear();
}

void PageEngine::Declare(const char *name, const char *defaultText, char kind) {
    if (Entry(name) == nullptr) list_.Add(name, kind, defaultText);
}

EingabeElement *PageEngine::Entry(const char *name) {
    const int index = EingabewertIndex(name, list_.list(), list_.count());
    return index < list_.count() ? &list_[index] : nullptr;
}

void PageEngine::Set(const char *name, const char *value, char kind) {
    Declare(name, nullptr, kind);
    SetEingabeWert(list_.count(), list_.list(), name, value);
}

void PageEngine::SetList(const char *name, std::initializer_list<std::string_view> values, char kind) {
    Declare(name, nullptr, kind);
    list_.SetValues(static_cast<int>(Entry(name) - list_.list()), values);
}

std::string PageEngine::PageAt(const std::string &path) {
    CapturedPage page;
    ErsetzeUndGebeHtmlDateiAus(path.c_str(), nullptr, iErsetzungsAnfang, iErsetzungsEnde,
                               &list_.count(), &list_.list());
    return page.Text();
}

std::string PageEngine::Page(const std::string &content, const std::string &relative) {
    return PageAt(dir_.Write(relative, content));
}

std::string PageEngine::Evaluate(const char *text, int cycleIndex) {
    char *result = reinterpret_cast<char *>(static_cast<intptr_t>(cycleIndex));
    ErsetzeUndGebeHtmlDateiAus(text, &result, iErsetzungsAnfang, iErsetzungsEnde, &list_.count(),
                               &list_.list());
    return HeapText(result).str();
}

}  // namespace kx::test
