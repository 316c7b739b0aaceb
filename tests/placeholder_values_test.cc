// Placeholder values: MatchIt, the selection form of ReplaceValue and
// DetermineReplaceValue, inline controls, and the comparisons they and IF
// lines make (operators, comparison tables, CompareFunction).
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "kx_convert.h"
#include "support/page_engine.h"
#include "template/control_form.h"

namespace {

using kx::test::HeapText;
using kx::test::InputList;

class Placeholders : public kx::test::PageEngine {
protected:
    void SetUp() override {
        PageEngine::SetUp();
        SetList("Typ", {"CPU", "Fan", "CPU"});
        SetList("State", {"ok", "bad", "warn"});
        Set("Name", "12");
        Set("bar", "a|b");
    }

    // ReplaceValue on a placeholder text, which must come back unchanged:
    // "result|current name|message|value index".
    std::string Replace(const std::string &placeholder) {
        std::string text = placeholder;
        ErsetzungsName name = {};
        char message[KX_MESSAGE_SIZE] = "stale";
        int valueIndex = 7;
        const int result = ReplaceValue(text.data(), std::strrchr(text.data(), '}'), &list_.count(), &list_.list(), "~",
                                        &name, message, &valueIndex, -1);
        EXPECT_EQ(text, placeholder) << "the placeholder text is restored";
        const std::string out = std::to_string(result) + "|" + (name.Aktuell ? name.Aktuell : "<null>") + "|" + message +
                                "|" + std::to_string(valueIndex);
        std::free(name.Liste);
        return out;
    }

    // CreateValueFromControl on text with the entry name as its this entry:
    // the result, then "@" and the length it consumed.
    std::string Control(const char *text, const char *thisName = "Name") {
        std::string copy = text;
        char *result = nullptr;
        char message[KX_MESSAGE_SIZE] = "";
        const int index = EingabewertIndex(thisName, list_.list(), list_.count());
        const int used = CreateValueFromControl(copy.data(), index, -1, &list_.count(), &list_.list(), &result, -1, 2,
                                                "}", message);
        EXPECT_EQ(copy, text);
        EXPECT_EQ(_InCreateValueFromControl, 0);
        return HeapText(result).str() + "@" + std::to_string(used);
    }
    // Control through a form kept at one offset, as beside a stored cycle line.
    std::string KeptControl(const char *text, std::vector<kx::tmpl::ControlForm> &kept) {
        std::string copy = text;
        char *result = nullptr;
        char message[KX_MESSAGE_SIZE] = "";
        const int index = EingabewertIndex("Name", list_.list(), list_.count());
        const kx::tmpl::ControlCall call{index, -1, &list_.count(), &list_.list(), -1, 2, "}", message};
        const int used = kx::tmpl::ControlValue(copy.data(), call, &kept, 0, &result);
        return HeapText(result).str() + "@" + std::to_string(used);
    }
    std::string ControlResult(const char *text, const char *thisName = "Name") {
        const std::string out = Control(text, thisName);
        return out.substr(0, out.rfind('@'));
    }
};

TEST_F(Placeholders, MatchIt) {
    EXPECT_EQ(HeapText(MatchIt("{CycleCount}", "{", -2, nullptr)).str(), "0");
    EXPECT_EQ(HeapText(MatchIt("{CycleCount}", "{", 5, nullptr)).str(), "5");
    EXPECT_EQ(HeapText(MatchIt("[{bar}]", "{", -1, "|")).str(), "[a%7Cb]") << "the characters given are encoded";
    EXPECT_EQ(HeapText(MatchIt("{bar}", "{", -1, nullptr)).str(), "a|b");
    for (const char *same : {"no marker", "{IF 0}"}) EXPECT_EQ(MatchIt(same, "{", -1, nullptr), same) << "nothing produced";
}

// MatchIt answers a text of one plain placeholder without running the
// processor: the answer must be the processor's, for lists and fixed cycles.
TEST_F(Placeholders, MatchItOnOnePlaceholderAnswersAsTheProcessor) {
    Declare("Empty");
    const char *texts[] = {"{Name}", "{State}", "{Typ}", "{bar}", "{Empty}", "{Unknown}", "{State}x", "{IFy}"};
    for (const char *text : texts) {
        for (const int cycle : {-2, -1, 0, 1, 2, 3}) {
            char *processed = reinterpret_cast<char *>(static_cast<intptr_t>(cycle));
            ErsetzeUndGebeHtmlDateiAus(text, &processed, iErsetzungsAnfang, iErsetzungsEnde, _pEingabeAnzahl,
                                       _pEingabe);
            char *matched = MatchIt(text, "{", cycle, nullptr);
            const std::string expected = processed != nullptr ? HeapText(processed).str() : text;
            EXPECT_EQ(matched != text ? HeapText(matched).str() : text, expected) << text << " at " << cycle;
        }
    }
}

TEST_F(Placeholders, SelectionForms) {
    EXPECT_EQ(Replace("{Name}"), "0|<null>||-1") << "no selection";
    _InCreateValueFromControl = 1;
    EXPECT_EQ(Replace("{Name}"), "1|Name||-1") << "control mode yields the bare name";
    EXPECT_EQ(Replace(""), "1|||-1") << "a text shorter than the marker";
    _InCreateValueFromControl = 0;
    EXPECT_EQ(Replace("{State[{Typ[CPU]}]}"), "2|State_CPU||-1");
    EXPECT_EQ(Values("State_CPU"), "[ok][warn]");
    EXPECT_EQ(Entry("State_CPU")->Art, 'j');
    EXPECT_EQ(Replace("{State[{Typ[CPU]}]}"), "0|State_CPU||-1") << "the entry exists now";
    EXPECT_EQ(Replace("{State[{Typ[Disk|Net]}]}"), "0|State_Disk||-1") << "nothing selected names the first candidate";
    Set("which", "Fan");
    EXPECT_EQ(Replace("{State[{Typ[{which}]}]}"), "1|State_Fan||-1") << "the elements are evaluated";
    EXPECT_EQ(Values("State_Fan"), "[bad]");
    EXPECT_EQ(Page("{State[{Typ[CPU]}]}|{State_CPU}\n"), "ok|ok\n");
    EXPECT_EQ(Page("{State[{Typ[CPU}} x\n"), "<! first ] missing !>\n{State[{Typ[CPU}} x\n");
}

TEST_F(Placeholders, SelectionWidenedByRatioOrIndexed) {
    SetList("State", {"a", "b", "c", "d", "e", "f"});
    EXPECT_EQ(Replace("{State[{Typ[CPU]}]}"), "4|State_CPU||-1");
    EXPECT_EQ(Values("State_CPU"), "[a][b][e][f]");
    Fresh();
    SetList("State", {"ok", "bad", "warn", "x"});
    EXPECT_EQ(Replace("{State[{Typ[CPU[1]]}]}"), "2|State_CPU||1");
    EXPECT_EQ(Values("State_CPU"), "[bad][x]");
    Set("pos", "2");
    EXPECT_EQ(Replace("{State[{Typ[Fan[{pos}]]}]}"), "1|State_Fan||2");
}

TEST_F(Placeholders, SeveralCandidatesSkipUnknownValuesAndTheLastKeepsNoValue) {
    SetList("State", {"ok", "Unknown yet", "warn"});
    EXPECT_EQ(Replace("{State[{Typ[Fan|CPU]}]}"), "2|State_CPU||-1");
    SetList("State", {"ok", "fine", "warn"});
    EXPECT_EQ(Replace("{State[{Typ[Fan|Disk]}]}"), "1|State_Fan||-1");
    EXPECT_EQ(Values("State_Fan"), "[fine]");
    Fresh();
    SetList("State", {"NOVALUE", "x", "y"});
    EXPECT_EQ(Replace("{State[{Typ[Disk|CPU]}]}"), "2|State_CPU||-1") << "the last candidate is taken";
    EXPECT_EQ(Values("State_CPU"), "[NOVALUE][y]");
    EXPECT_EQ(Replace("{State[{Typ[CPU|Fan]}]}"), "0|State_CPU||-1") << "found as an entry now";
    EXPECT_EQ(Replace("{State[{Typ[Net|Fan]}]}"), "1|State_Fan||-1");
}

TEST_F(Placeholders, SelectionMessages) {
    const std::pair<std::string, std::string> cases[] = {
        {"{State[{Typ[CPU}}", "<! first ] missing !>\n"}, {"{State[{Typ[CPU}]}", "<! second ] missing !>\n"},
        {"{State[{Typ[CPU}", ""}, {"{State[{Nokey[CPU]}]}", "<! Nokey unknown !>\n"}, {"{Nope[{Typ[CPU]}]}", "<!Nope_unknown>"},
    };
    for (const auto &[text, message] : cases) {
        const std::string out = Replace(text);
        EXPECT_EQ(out.substr(out.find('|', 2) + 1, message.size() + 1), message + "|") << text;
    }
    const std::string out = Replace("{State[{" + std::string(600, 'k') + "[CPU]}]}");
    EXPECT_EQ(out.size() - out.find('|', 2) - 1 - 3, KX_MESSAGE_SIZE - 1u) << "a long message is cut to the buffer";
}

// One form through both readers: the placeholder ("result|name|message|
// value index") and "_valueindex," with ",none" and the value "ok". They
// agree on well-formed forms and keep their own answers to malformed ones.
TEST_F(Placeholders, SelectionFormThroughBothReaders) {
    struct Case { const char *form, *placeholder, *argument; };
    const Case cases[] = {
        {"{State[{Typ[CPU]}]}", "2|State_CPU||-1", "0"},
        {"{State[{Typ[Fan|CPU]}]}", "1|State_Fan||-1", "none"},
        {"{State[ {Typ[CPU]}]}", "2|State_CPU||-1", "none"},      // Key not right after "["
        {"{State[a][{Typ[CPU]}]}", "2|State_CPU||-1", "none"},    // a second "[" before Key
        {"{State[{Typ[CP[U]]}]}", "0|State_CP||0", "none"},       // nested brackets in the elements
        {"{State[{Typ[CPU]x]}]}", "2|State_CPU||-1", "0"},        // text between the elements' "]" and the last
        {"{State[{Typ[CPU]}", "0|<null>||-1", "0"},               // the placeholder is not closed
        {"{State[{Typ[CPU}", "0|<null>||-1", "none"},             // no "]": no form
        {"{State[Typ[CPU]]}", "0|<null>||-1", "none"},            // no inner placeholder
        {"[{Typ[CPU]}]}", "2|_CPU|<!_unknown>|-1", "none"},       // no Prefix, no opening marker
    };
    for (const Case &c : cases) {
        Fresh();
        EXPECT_EQ(Replace(c.form), c.placeholder) << c.form;
        std::string argument = std::string(c.form) + ",none";
        char value[] = "ok";
        EXPECT_EQ(HeapText(ConvertToValueIndex(argument.data(), value, -1)).str(), c.argument) << c.form;
        EXPECT_EQ(argument, std::string(c.form) + ",none");
    }
    // An argument that begins with "[{" names everything after its "[" as Prefix.
    SetList("{Typ[CPU]}]},none", {"ok"});
    char argument[] = "[{Typ[CPU]}]},none", value[] = "ok";
    EXPECT_EQ(HeapText(ConvertToValueIndex(argument, value, -1)).str(), "0");
}

TEST_F(Placeholders, EnumerationOutput) {
    SetList("Typ", {"a", "a", "a"});
    struct Case { const char *mode, *prefix, *expected; };
    const Case cases[] = {{nullptr, "E1", "[Warning][Gone][3-x]"}, {"Numeric", "E2", "[2][-1][3-x]"},
                          {"Both", "E3", "[2 - Warning][-1 - Gone][3-x]"}, {"numeric", "E4", "[Warning][Gone][3-x]"}};
    for (const Case &c : cases) {
        if (c.mode != nullptr) Set("EnumOutput", c.mode);
        SetList(c.prefix, {"2 - Warning", "-1 - Gone", "3-x"});
        Replace(std::string("{") + c.prefix + "[{Typ[a]}]}");
        EXPECT_EQ(Values((std::string(c.prefix) + "_a").c_str()), c.expected) << c.prefix;
    }
}

// tests/data/placeholder_controls.txt: control, value of Name, result.
TEST_F(Placeholders, Controls) {
    Set("other", "v");
    Set("Dir", dir_.path().c_str());
    for (const kx::test::DataRow &row : kx::test::DataTable("placeholder_controls.txt")) {
        Set("Name", row[1]->c_str());
        const bool consumed = row[2]->find('@') != std::string::npos;
        EXPECT_EQ(consumed ? Control(row[0]->c_str()) : ControlResult(row[0]->c_str()), *row[2])
            << *row[0] << " with " << *row[1];
    }
    // A kept form is parsed from the first text at its offset, reused for the
    // same text and parsed anew for another: each answers as the call.
    std::vector<kx::tmpl::ControlForm> kept;
    for (const kx::test::DataRow &row : kx::test::DataTable("placeholder_controls.txt")) {
        Set("Name", row[1]->c_str());
        for (int pass = 0; pass < 2; ++pass)
            EXPECT_EQ(KeptControl(row[0]->c_str(), kept), Control(row[0]->c_str())) << *row[0] << " pass " << pass;
    }
    EXPECT_EQ(kept.size(), 1u);
    EXPECT_EQ(ControlResult("{=?on:off}", "nobody"), "on") << "without a this entry";
    dir_.Write("x.ini", "|\n");
    EXPECT_EQ(ControlResult("{=_file.{Dir}/x.ini==1?yes:no}"), "yes");
    EXPECT_EQ(ControlResult("{=_file.{Dir}\\x.ini!=1?yes:no}"), "no");
    EXPECT_EQ(_ThisValueIndex, -1);
}

TEST_F(Placeholders, ComparisonThatDeclaresEntries) {
    std::string text = "{={Typ}==Fan{DEFINE n1 a}{DEFINE n2 b}?yes:no}";
    char *result = nullptr;
    char message[KX_MESSAGE_SIZE] = "";
    CreateValueFromControl(text.data(), list_.count(), 1, &list_.count(), &list_.list(), &result, -1, 2, "}", message);
    EXPECT_EQ(HeapText(result).str(), "no") << "a line with DEFINEs writes nothing: the text is compared as written";
    EXPECT_EQ(Values("n2"), "[b]") << "the list grew while the comparison ran";
    EXPECT_EQ(Entry("Typ")->WertPosition, 0);
}

TEST_F(Placeholders, ControlsOnThePage) {
    EXPECT_EQ(Page("[{Name}{=?on:off}] [{Name}{=_this==1?A:{other}}]\n"), "[on] [{other}]\n");
    Set("loop", "{loop}{=_this==1?A:_this!}");
    const std::string page = Page("{loop}{=_this==1?A:_this!}\n");
    EXPECT_EQ(page.substr(page.size() - 3), "!!\n") << "each evaluation adds one mark, up to the bound";
    EXPECT_LT(page.size(), 4096u);
}

// --- comparisons

int Op(const char *op) { return DetermineCompareIndex(op, static_cast<int>(std::strlen(op))); }

// CompareFunction on the list l with the usual arguments of a condition.
int Compare(InputList &l, const char *type, const char *op, const char *right, int cycle = -1, int valueIndex = -1,
            int element = 0) {
    return CompareFunction(type, Op(op), nullptr, right, cycle, 0, valueIndex, element, &l.list(), &l.count());
}

TEST(Compare, OperatorIndex) {
    struct Case { const char *text; int length, index; };
    const Case cases[] = {
        {"==x", 2, 0}, {"!=", 2, 1}, {"<=", 2, 2}, {">=", 2, 3}, {"<x", 1, 4}, {">", 1, 5}, {"<=", 1, 4},
        {"=>", 2, -1}, {"=", 1, -1}, {"!", 1, -1}, {"==", 3, -1}, {"", 0, -1}, {"<", 2, -1}, {nullptr, 2, -1},
    };
    for (const Case &c : cases) EXPECT_EQ(DetermineCompareIndex(c.text, c.length), c.index) << c.text << "/" << c.length;
    ASSERT_EQ(CompareTabLength, 6);
}

// Each table answers the six operators (== != <= >= < >) for its kind; a pair
// that tells the kind from its neighbours shows which kind it is.
TEST(Compare, TablesFollowTheOperatorOrder) {
    struct Case { const VergleichsFunktion *table; const char *left, *right, *results; };
    const Case cases[] = {
        {TextCompareFunction, "B", "a", "011010"},     {TextCompareFunctioni, "B", "a", "010101"},
        {TextCompareFunctionN, "abc", "ab", "101100"}, {TextCompareFunctionNi, "ABc", "ab", "101100"},
        {NumericCompareFunction, "10", "9", "010101"}, {SubstringCompareFunction, "ab", "a", "101100"},
        {SubstringCompareFunction, "ab", "x", "010011"}, {SubstringCompareFunction, nullptr, "x", "010011"},
        {SubstringCompareFunction, "x", nullptr, "010011"},
    };
    for (const Case &c : cases)
        for (int op = 0; op < CompareTabLength; ++op)
            EXPECT_EQ(c.table[op](c.left, c.right), c.results[op] - '0')
                << (c.left ? c.left : "<null>") << " " << CompareTab[op].Operator << " " << (c.right ? c.right : "<null>");
}

// tests/data/comparisons.txt: kind, operator, value, alternatives, result.
TEST(Compare, EveryKindWithEveryOperator) {
    for (const kx::test::DataRow &c : kx::test::DataTable("comparisons.txt")) {
        InputList l;
        l.Add("v");
        SetEingabeWert(l.count(), l.list(), "v", c[2]->c_str());
        const char *type = c[0] ? c[0]->c_str() : nullptr;
        for (int cycle : {-1, 0})
            EXPECT_EQ(Compare(l, type, c[1]->c_str(), c[3]->c_str(), cycle), std::stoi(*c[4]))
                << c[0].value_or("<null>") << " '" << *c[2] << "' " << *c[1] << " '" << *c[3] << "' cycle " << cycle;
    }
}

TEST(Compare, FileTypeAndBadArgumentsNeverHold) {
    InputList l;
    l.Add("v");
    SetEingabeWert(l.count(), l.list(), "v", "a");
    auto file = [&](const char *type, int op, const char *left, const char *right) {
        return CompareFunction(type, op, left, right, -1, -1, -1, -1, &l.list(), &l.count());
    };
    EXPECT_EQ(file("_file", Op("=="), "1", "1"), 1) << "_file compares the given left text";
    EXPECT_EQ(file("_file", Op("=="), "0", "1"), 0);
    EXPECT_EQ(file("_file", Op("!="), "0", "1|0"), 1) << "only the first alternative counts";
    EXPECT_EQ(file("_File", Op("=="), nullptr, "1"), 0);
    EXPECT_EQ(file("_file", -1, "1", "1"), 0);
    for (int op : {-1, 6, 1000, -7})
        EXPECT_EQ(CompareFunction("_string", op, "1", "a", -1, 0, -1, 0, &l.list(), &l.count()), 0) << op;
    for (int index : {-1, 1, 99})
        EXPECT_EQ(CompareFunction("_string", 0, nullptr, "a", -1, index, -1, 0, &l.list(), &l.count()), 0) << index;
    EXPECT_EQ(CompareFunction("_string", 0, nullptr, "a", -1, 0, -1, 0, nullptr, &l.count()), 0);
    EXPECT_EQ(CompareFunction("_string", 0, nullptr, "a", -1, 0, -1, 0, &l.list(), nullptr), 0);
    EXPECT_EQ(CompareFunction("_stringn", -1, nullptr, "", -1, 0, -1, 0, &l.list(), &l.count()), 0);
}

TEST(Compare, AnyValueOfAListStepsTheEntryAlong) {
    InputList l;
    l.Add("L", 'j');
    l.Add("T", 'j');
    l.SetValues(0, {"a", "b", "c"});
    l.SetValues(1, {"1", "2", "3"});
    EXPECT_EQ(Compare(l, "_string", "==", "b", -1, -1, 1), 1);
    EXPECT_STREQ(l[0].Wert + l[0].WertPosition, "b");
    EXPECT_STREQ(l[1].Wert + l[1].WertPosition, "2") << "the this entry keeps the same position";
    l[0].WertPosition = l[1].WertPosition = 0;
    EXPECT_EQ(Compare(l, "_string", "==", "z", -1, -1, 1), 0);
    EXPECT_STREQ(l[0].Wert + l[0].WertPosition, "c") << "never stepped past the last value";
    EXPECT_STREQ(l[1].Wert + l[1].WertPosition, "3");
    l[0].WertPosition = 2;  // from the current value on: "b", "c"
    EXPECT_EQ(Compare(l, "_string", "==", "a"), 0);
    l[0].WertPosition = 0;
    EXPECT_EQ(Compare(l, "_string", "==", "c"), 1);
    EXPECT_STREQ(l[1].Wert + l[1].WertPosition, "3") << "the this entry is the left entry: no double step";
}

TEST(Compare, ChosenOrCurrentValueOfAList) {
    struct Case { int cycle, valueIndex; const char *right; int expected; };
    const Case cases[] = {{-1, 2, "c", 1}, {-1, 3, "c", 0}, {-1, 1, "c", 0}, {-1, 0, "a|x", 1}, {-1, 99, "c", 0},
                          {1, -1, "b", 1}, {1, -1, "a|c", 0}};  // a cycle index compares the current value only
    for (const Case &c : cases) {
        InputList l;
        l.Add("L", 'j');
        l.SetValues(0, {"a", "b", "c"});
        const int position = c.cycle < 0 ? 0 : 2;
        l[0].WertPosition = position;
        EXPECT_EQ(Compare(l, "_string", "==", c.right, c.cycle, c.valueIndex, c.cycle < 0 ? 5 : 0), c.expected)
            << c.cycle << "/" << c.valueIndex;
        if (c.cycle >= 0) EXPECT_EQ(l[0].WertPosition, position);
        l[0].WertPosition = -1;  // a position off the values reads as no value
        EXPECT_EQ(Compare(l, "_strstr", "!=", "x", 1), 1);
    }
}

TEST(Compare, EntryWithoutValue) {
    struct Case { const char *type, *right; int cycle, expected; };
    const Case cases[] = {
        {"_stringn", "x|", -1, 1}, {"_string", "x|", -1, 0},    {"_stringn", "", -1, 1}, {"_stringn", "x", -1, 0},
        {"_STRINGN", "|x", -1, 1}, {"_stringni", "x|", -1, 0}, {"_numeric", "", -1, 0}, {"_strstr", "x", 0, 0},
        {"_string", "", 0, 1},  // compared as the null text, which counts as empty
    };
    for (const Case &c : cases) {
        InputList l;
        l.Add("e", 'n', "default");
        EXPECT_EQ(Compare(l, c.type, "==", c.right, c.cycle), c.expected) << c.type << " '" << c.right << "' " << c.cycle;
    }
}

class CompareOnAPage : public kx::test::PageEngine {};

TEST_F(CompareOnAPage, RightTextPlaceholdersAreEvaluatedAndTheTextKept) {
    Set("v", "abc");
    Set("other", "abc");
    auto compare = [&](const char *right) {
        return CompareFunction("_string", Op("=="), nullptr, right, -1, 2, -1, 2, &list_.list(), &list_.count());
    };
    EXPECT_EQ(compare("{other}"), 1);
    EXPECT_EQ(compare("x|{other}"), 1);
    EXPECT_EQ(compare("{other}x"), 0);
    char right[] = "a|abc%20c|abc";
    EXPECT_EQ(compare(right), 1);
    EXPECT_STREQ(right, "a|abc%20c|abc");
}

}  // namespace
