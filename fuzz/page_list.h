// A fixed input list for the page engine's fuzz targets, built afresh for
// every input and released after it, so that what one input declares (DEFINE,
// selection forms) never reaches the next.
#ifndef KX_FUZZ_PAGE_LIST_H
#define KX_FUZZ_PAGE_LIST_H

#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <string>

#include "fuzz_list.h"
#include "kx_template.h"

namespace kx::fuzz {

class PageList {
public:
    PageList() {
        Add("Ersetzungsanfang", {"{"});
        Add("Ersetzungsende", {"}"});
        Add("user", {"bob"});
        Add("flag", {"1"});
        Add("empty", {});
        Add("list", {"x", "y", "z"}, 'j');
        Add("Typ", {"CPU", "Fan", "CPU"}, 'j');
        Add("State", {"ok", "unknown", "2 - Warning"}, 'j');
        Add("Name", {"12"});
        Add("brace", {"{user}{=?a:b} <!{IF 0}> %s %n ~ }"});
        Add("EnumOutput", {"Numeric"});
        Add("DeleteCopyright", {"yes"});
        // Groups for nested CYCLE blocks: g's values hold 2 and 1 of v's.
        Add("g", {"x", "y"}, 'j');
        Add("gInternalcount", {"2", "1"}, 'j');
        Add("v", {"p", "q", "r"}, 'j');
        Add("other", {"K0", "K1"}, 'x');
        iErsetzungsAnfang = 0;
        iErsetzungsEnde = 1;
        _pEingabe = &list_;
        _pEingabeAnzahl = &count_;
    }
    ~PageList() {
        FreeList(list_, count_);
        _pEingabe = nullptr;
        _pEingabeAnzahl = nullptr;
    }
    PageList(const PageList &) = delete;
    PageList &operator=(const PageList &) = delete;
    int *Count() { return &count_; }
    EingabeElement **List() { return &list_; }

private:
    void Add(const char *name, std::initializer_list<const char *> values, char kind = 'n') {
        list_ = static_cast<EingabeElement *>(std::realloc(list_, sizeof(EingabeElement) * (count_ + 1)));
        std::string block;
        for (const char *value : values) block.append(value).push_back('\0');
        char *wert = nullptr;
        if (values.size() > 0) {
            wert = static_cast<char *>(std::malloc(block.size()));
            std::memcpy(wert, block.data(), block.size());
        }
        list_[count_] = EingabeElement{strdup(name), static_cast<uint32_t>(std::strlen(name)), wert,
                                       static_cast<int32_t>(values.size()), 0, kind, nullptr};
        ++count_;
    }

    EingabeElement *list_ = nullptr;
    int count_ = 0;
};

}  // namespace kx::fuzz

#endif
