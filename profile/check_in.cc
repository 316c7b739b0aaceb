// Reworking the value lists of entries: CheckInHandling, ConvertToStream,
// MergeElementValue, SetListeningEingabeWerte.
#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "core/text.h"
#include "kx_profile.h"
#include "profile/profile_internal.h"

namespace kx::profile {
namespace {

// A read position in an entry's values that never steps past the last one.
class Cursor {
  public:
    explicit Cursor(const EingabeElement &entry) : entry_(entry) {}
    std::string_view Current() const {
        return index_ < entry_.WertGesetzt ? std::string_view(entry_.Wert + offset_) : std::string_view();
    }
    bool AtLast() const { return index_ + 1 >= entry_.WertGesetzt; }
    bool Done() const { return index_ >= entry_.WertGesetzt; }
    void Next() {
        if (Done()) return;
        offset_ += Current().size() + 1;
        ++index_;
    }
    void Reset() { index_ = 0, offset_ = 0; }

  private:
    const EingabeElement &entry_;
    int index_ = 0;
    std::size_t offset_ = 0;
};

void Join(std::string &out, std::string_view piece, std::string_view divider) {
    if (!out.empty()) out.append(divider);
    out.append(piece);
}

// The texts of keys 1 .. n-1 at the current position, joined by "_".
std::string KeyTexts(const std::vector<Cursor> &keys) {
    std::string text;
    for (std::size_t k = 1; k < keys.size(); ++k) text.append(keys[k].Current()).append("_");
    if (!text.empty()) text.pop_back();
    return text;
}

void ResetAll(std::vector<Cursor> &keys) {
    for (Cursor &key : keys) key.Reset();
}

// Goes through name's values, translating numbers through the key table.
std::string Translate(const EingabeElement &entry, std::vector<Cursor> &keys, std::string_view divider) {
    std::string result;
    Cursor name(entry);
    for (int i = 0; i < entry.WertGesetzt; ++i) {
        const std::string value(name.Current());
        if (value.empty() || !std::isdigit(static_cast<unsigned char>(value[0]))) {
            Join(result, value, divider);
            name.Next();
            ResetAll(keys);
            continue;
        }
        while (!keys.front().Done() && keys.front().Current() != value) {
            for (Cursor &key : keys) key.Next();
        }
        if (keys.front().Done()) break;  // not in the table: the rest is left out
        Join(result, KeyTexts(keys), divider);
        name.Next();
        if (keys.front().AtLast()) {
            ResetAll(keys);
            continue;
        }
        keys.front().Next();
        if (!name.Done() && std::atoi(std::string(keys.front().Current()).c_str()) >
                                std::atoi(std::string(name.Current()).c_str())) {
            ResetAll(keys);
            continue;
        }
        for (std::size_t k = 1; k < keys.size(); ++k) keys[k].Next();
    }
    return result;
}

std::string Lowered(std::string_view text) {
    std::string lower(text);
    for (char &c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return lower;
}

int Folded(char c) { return std::tolower(static_cast<unsigned char>(c)); }

// Compares as strcmp would after folding ASCII letters, without copies.
int CompareFolded(std::string_view a, std::string_view b) {
    const std::size_t common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; ++i)
        if (Folded(a[i]) != Folded(b[i])) return Folded(a[i]) < Folded(b[i]) ? -1 : 1;
    return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

std::vector<std::string_view> Values(const EingabeElement &entry) {
    std::vector<std::string_view> values;
    for (Cursor cursor(entry); !cursor.Done(); cursor.Next()) values.push_back(cursor.Current());
    return values;
}

std::vector<std::string_view> Split(std::string_view text, std::string_view divider) {
    std::vector<std::string_view> parts;
    std::size_t start = 0;
    for (std::size_t hit; !divider.empty() && (hit = text.find(divider, start)) != std::string_view::npos;
         start = hit + divider.size())
        parts.push_back(text.substr(start, hit - start));
    parts.push_back(text.substr(start));
    return parts;
}

// Two case-insensitively ordered lists merged; "sc.mib" leads the result.
std::string MergeMibNames(const std::vector<std::string_view> &old, const std::vector<std::string_view> &added,
                          std::string_view divider) {
    std::string result;
    bool empty = true;
    std::size_t o = 0, n = 0;
    const auto take = [&](std::string_view value) {
        if (!empty) result.append(divider);
        result.append(value);
        empty = false;
    };
    while (o < old.size() && n < added.size()) {
        const int order = CompareFolded(added[n], old[o]);
        const bool newLeads = empty && CompareFolded(added[n], "sc.mib") == 0;
        const bool oldLeads = empty && !newLeads && CompareFolded(old[o], "sc.mib") == 0;
        if (oldLeads) {
            take(old[o++]);
        } else if (newLeads || order < 0) {
            take(added[n++]);
        } else if (order == 0) {
            take(added[n++]);
            ++o;
        } else {
            take(old[o++]);
        }
    }
    while (o < old.size()) take(old[o++]);
    while (n < added.size()) take(added[n++]);
    return result;
}

// The old values, then the new ones not among them yet (case folded).
std::string AppendMissing(const std::vector<std::string_view> &old, const std::vector<std::string_view> &added,
                          std::string_view divider) {
    std::unordered_set<std::string> seen;
    std::string result;
    bool empty = true;
    for (const auto *values : {&old, &added})
        for (std::string_view value : *values) {
            if (!seen.insert(Lowered(value)).second && values == &added) continue;
            if (!empty) result.append(divider);
            result.append(value);
            empty = false;
        }
    return result;
}

}  // namespace
}  // namespace kx::profile

extern "C" {

int CheckInHandling(int count, EingabeElement *list, const char *name, const char *fileName, const char *divider,
                    const char **keyNames, int keyCount) {
    return kx::profile::Guard(count, [&] {
        using namespace kx::profile;
        const int index = list != nullptr && name != nullptr ? EingabewertIndex(name, list, count) : count;
        if (index >= count || !HasValue(&list[index]) || keyNames == nullptr || keyCount < 1) return index;
        if (ReadNamedUIDFile(count, list, fileName) != 0) return index;
        std::vector<kx::profile::Cursor> keys;
        std::vector<EingabeElement *> keyEntries;
        for (int k = 0; k < keyCount; ++k) {
            EingabeElement *key = Entry(count, list, keyNames[k]);
            if (!HasValue(key)) return index;
            keyEntries.push_back(key);
            keys.emplace_back(*key);
        }
        const std::string glue = divider != nullptr ? divider : "";
        const std::string result = Translate(list[index], keys, glue);
        SetValueList(count, list, index, result.c_str(), glue.c_str());
        for (EingabeElement *key : keyEntries) key->WertPosition = 0;
        return index;
    });
}

char *ConvertToStream(int count, EingabeElement *list, const char *name, const char *divider) {
    return kx::profile::Guard(static_cast<char *>(nullptr), [&]() -> char * {
        using namespace kx::profile;
        const EingabeElement *entry = Entry(count, list, name);
        if (!HasValue(entry)) return nullptr;
        std::string joined;
        bool first = true;
        for (Cursor cursor(*entry); !cursor.Done(); cursor.Next(), first = false) {
            if (!first && divider != nullptr) joined.append(divider);
            joined.append(cursor.Current());
        }
        return kx::core::HeapCopy(joined);
    });
}

int MergeElementValue(int count, EingabeElement *list, const char *name, const char *newValues, const char *divider) {
    return kx::profile::Guard(count, [&] {
        using namespace kx::profile;
        const int index = list != nullptr && name != nullptr ? EingabewertIndex(name, list, count) : count;
        if (newValues == nullptr || index >= count) return index;
        const std::string glue = divider != nullptr ? divider : "";
        const EingabeElement &entry = list[index];
        if (entry.Wert == nullptr || entry.WertGesetzt < 1) {
            SetValueList(count, list, index, newValues, glue.c_str());
            return index;
        }
        const std::string added(newValues);
        const auto values = Values(entry);
        const auto fresh = Split(added, glue);
        const std::string merged = std::strcmp(name, "Mibname") == 0 ? MergeMibNames(values, fresh, glue)
                                                                     : AppendMissing(values, fresh, glue);
        SetValueList(count, list, index, merged.c_str(), glue.c_str());
        return index;
    });
}

int SetListeningEingabeWerte(int count, EingabeElement *list, const char *errorText, const char *check,
                             const char *action, const char *listening, const char *processId) {
    using kx::profile::Entry;
    int result = 0;
    if (errorText != nullptr) {
        if (Entry(count, list, "ErrorText") == nullptr) result -= 1;
        AppendEingabeWert(count, list, "ErrorText", errorText);
    }
    struct Setting {
        const char *name;
        const char *text;
        int weight;
    };
    const Setting settings[] = {
        {"ListeningCheck", check, 2},
        {"ListeningAction", action, 4},
        {"Listening", listening, 8},
        {"ProcessID", processId, 16},
    };
    for (const Setting &setting : settings) {
        if (Entry(count, list, setting.name) == nullptr) result -= setting.weight;
        SetEingabeWert(count, list, setting.name, setting.text);
    }
    return result;
}

}  // extern "C"
