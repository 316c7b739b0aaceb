// Placeholder values: MatchIt, the selection form of ReplaceValue and
// DetermineReplaceValue, and inline controls.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "support/page_engine.h"

namespace {

using kx::test::HeapText;

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
    TearDown();
    SetUp();
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
    TearDown();
    SetUp();
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

// Each control with the value of Name it runs on; the result and the length consumed.
TEST_F(Placeholders, Controls) {
    Set("other", "v");
    Set("Dir", dir_.path().c_str());
    struct Case { const char *control, *name, *expected; };
    const Case cases[] = {
        // an empty condition: the value is "true" unless empty or 0; branches are not evaluated
        {"{=?on:off} rest", "12", "on@10"}, {"{=?on:off}", "0", "off@10"}, {"{=?on}", "0", "@6"},
        {"{=?on:off}", "abc", "off@10"}, {"{=?{x}:off}", "abc", "off@11"},
        // what is no control
        {"{=no question}", "12", "<null>@0"}, {"{=x?a:b}", "12", "<null>@8"}, {"{=x==1?a:b}", "12", "<null>@11"},
        {"{={nobody}==1?a:b}", "12", "b@18"}, {"{=unclosed", "12", "<null>@0"},
        // branches: evaluated, nested, with the value, a conversion, text in front of a chain
        {"{=_this==1?A:[{other}]}", "12", "[v]"}, {"{=_this==1?A:{=?yes:no}}", "12", "yes"},
        {"{=_this==1?A:is _this!}", "12", "is 12!"}, {"{=_this==1?A:is _this}", "12", "is 12"},
        {"{=_this==1?A:javascript%3Ago(_this)}", "12", "javascript:go(12)"}, {"{=_numeric._this==1?A:B}", "12", "B"},
        {"{=_this==1?A:_hex._this}", "12", "c"}, {"{=_this==1?A:Hex: _hex.{Name}}", "12", "Hex: c"},
        // compared controls
        {"{=_this==12?A:B}", "12", "A"}, {"{=_this==12?A:B}", "13", "B"}, {"{=_numeric.{Name}>=10?many:few}", "12", "many"},
        {"{=_numeric.{Name}>=10?many:few}", "5", "few"}, {"{=_this!=1|12?A:_hex._this}", "12", "A"},
        {"{=_this<5?A:B}", "255", "A"}, {"{=_numeric._this<5?A:_hex._this}", "255", "ff"},
        {"{=_this==12?{=_this==12?in:out}:B}", "12", "in"}, {"{=_this=12?A:B}", "12", "B"},
        // a "|" in a placeholder's value stays inside one element of the old and new lists
        {"{=_this!=?_strreplace,{bar},Z._this:}", "xa|bya|b", "xZyZ"},
        {"{=_this!=?_strchange,{bar},N|M._this:}", "xa|bya|b", "xNya|b"},
        {"{=_this!=?_strchange,{bar},{bar}._this:}", "xa|bya|b", "x{bar}ya|b"},  // new texts are taken as written
        {"{=_this!=?_strreplace,q|{bar},Y|Z._this:}", "xa|bya|b", "xa|bya|b"},   // then every bar of the old texts is data
        // the file test
        {"{=_file.{Dir}/x.ini==1?yes:no}", "12", "no"},
    };
    for (const Case &c : cases) {
        Set("Name", c.name);
        EXPECT_EQ(std::strchr(c.expected, '@') ? Control(c.control) : ControlResult(c.control), c.expected)
            << c.control << " with " << c.name;
    }
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

}  // namespace
