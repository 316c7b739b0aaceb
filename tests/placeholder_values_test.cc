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
using kx::test::PageEngine;

class Placeholders : public PageEngine {
protected:
    void SetUp() override {
        PageEngine::SetUp();
        SetList("Typ", {"CPU", "Fan", "CPU"});
        SetList("State", {"ok", "bad", "warn"});
        Set("Name", "12");
        Set("bar", "a|b");
    }

    struct Outcome {
        int result;
        std::string aktuell;
        std::string message;
        int valueIndex;
    };

    // ReplaceValue on a placeholder text; the text must come back unchanged.
    Outcome Replace(const std::string &placeholder) {
        std::string text = placeholder;
        ErsetzungsName name = {};
        char message[KX_MESSAGE_SIZE] = "stale";
        int valueIndex = 7;
        char *end = std::strrchr(text.data(), '}');
        const int result = ReplaceValue(text.data(), end, &list_.count(), &list_.list(), "~",
                                        &name, message, &valueIndex, -1);
        EXPECT_EQ(text, placeholder) << "the placeholder text is restored";
        Outcome out{result, name.Aktuell ? name.Aktuell : "<null>", message, valueIndex};
        std::free(name.Liste);
        return out;
    }

    // CreateValueFromControl on text with the entry name as its this entry.
    std::string Control(const char *text, const char *thisName, int *consumed = nullptr) {
        std::string copy = text;
        char *result = nullptr;
        char message[KX_MESSAGE_SIZE] = "";
        const int index = EingabewertIndex(thisName, list_.list(), list_.count());
        const int used = CreateValueFromControl(copy.data(), index, -1, &list_.count(),
                                                &list_.list(), &result, -1, 2, "}", message);
        EXPECT_EQ(copy, text);
        EXPECT_EQ(_InCreateValueFromControl, 0);
        if (consumed != nullptr) *consumed = used;
        return HeapText(result).str();
    }
};

TEST_F(Placeholders, MatchItCycleCountAndSamePointer) {
    EXPECT_EQ(HeapText(MatchIt("{CycleCount}", "{", -2, nullptr)).str(), "0");
    EXPECT_EQ(HeapText(MatchIt("{CycleCount}", "{", 5, nullptr)).str(), "5");
    const char *plain = "no marker";
    EXPECT_EQ(MatchIt(plain, "{", -1, nullptr), plain);
    const char *unproduced = "{IF 0}";
    EXPECT_EQ(MatchIt(unproduced, "{", -1, nullptr), unproduced) << "nothing produced";
}

TEST_F(Placeholders, MatchItEncodesCharacters) {
    EXPECT_EQ(HeapText(MatchIt("[{bar}]", "{", -1, "|")).str(), "[a%7Cb]");
    EXPECT_EQ(HeapText(MatchIt("{bar}", "{", -1, nullptr)).str(), "a|b");
}

TEST_F(Placeholders, SimplePlaceholderIsNoSelection) {
    const Outcome out = Replace("{Name}");
    EXPECT_EQ(out.result, 0);
    EXPECT_EQ(out.aktuell, "<null>");
    EXPECT_EQ(out.message, "");
    EXPECT_EQ(out.valueIndex, -1);
}

TEST_F(Placeholders, ControlModeYieldsTheBareName) {
    _InCreateValueFromControl = 1;
    const Outcome out = Replace("{Name}");
    const Outcome empty = Replace("");
    _InCreateValueFromControl = 0;
    EXPECT_EQ(out.result, 1);
    EXPECT_EQ(out.aktuell, "Name");
    EXPECT_EQ(empty.result, 1) << "a text shorter than the marker";
    EXPECT_EQ(empty.aktuell, "");
}

TEST_F(Placeholders, SelectionWithOneCandidate) {
    const Outcome out = Replace("{State[{Typ[CPU]}]}");
    EXPECT_EQ(out.result, 2);
    EXPECT_EQ(out.aktuell, "State_CPU");
    EXPECT_EQ(Values("State_CPU"), "ok~warn");
    ASSERT_NE(Entry("State_CPU"), nullptr);
    EXPECT_EQ(Entry("State_CPU")->Art, 'j');
    EXPECT_EQ(Replace("{State[{Typ[CPU]}]}").result, 0) << "the entry exists now";
}

TEST_F(Placeholders, SelectionWidenedByRatio) {
    SetList("State", {"a", "b", "c", "d", "e", "f"});
    EXPECT_EQ(Replace("{State[{Typ[CPU]}]}").result, 4);
    EXPECT_EQ(Values("State_CPU"), "a~b~e~f");
}

TEST_F(Placeholders, SeveralCandidatesSkipUnknownValues) {
    SetList("State", {"ok", "Unknown yet", "warn"});
    const Outcome out = Replace("{State[{Typ[Fan|CPU]}]}");
    EXPECT_EQ(out.result, 2);
    EXPECT_EQ(out.aktuell, "State_CPU");
    SetList("State", {"ok", "fine", "warn"});
    EXPECT_EQ(Replace("{State[{Typ[Fan|Disk]}]}").aktuell, "State_Fan");
    EXPECT_EQ(Values("State_Fan"), "fine");
}

TEST_F(Placeholders, LastCandidateKeepsNoValue) {
    SetList("State", {"NOVALUE", "x", "y"});
    EXPECT_EQ(Replace("{State[{Typ[Disk|CPU]}]}").result, 2) << "the last candidate is taken";
    EXPECT_EQ(Values("State_CPU"), "NOVALUE~y");
    const Outcome out = Replace("{State[{Typ[CPU|Fan]}]}");
    EXPECT_EQ(out.aktuell, "State_CPU") << "found as an entry now";
    EXPECT_EQ(Replace("{State[{Typ[Net|Fan]}]}").aktuell, "State_Fan");
}

TEST_F(Placeholders, NothingSelectedNamesTheFirstCandidate) {
    const Outcome out = Replace("{State[{Typ[Disk|Net]}]}");
    EXPECT_EQ(out.result, 0);
    EXPECT_EQ(out.aktuell, "State_Disk");
}

TEST_F(Placeholders, SelectionValueIndex) {
    SetList("State", {"ok", "bad", "warn", "x"});
    const Outcome out = Replace("{State[{Typ[CPU[1]]}]}");
    EXPECT_EQ(out.valueIndex, 1);
    EXPECT_EQ(Values("State_CPU"), "bad~x");
    Set("pos", "2");
    EXPECT_EQ(Replace("{State[{Typ[Fan[{pos}]]}]}").valueIndex, 2);
}

TEST_F(Placeholders, SelectionElementsAreEvaluated) {
    Set("which", "Fan");
    EXPECT_EQ(Replace("{State[{Typ[{which}]}]}").aktuell, "State_Fan");
    EXPECT_EQ(Values("State_Fan"), "bad");
}

TEST_F(Placeholders, SelectionMessages) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"{State[{Typ[CPU}}", "<! first ] missing !>\n"},
        {"{State[{Typ[CPU}]}", "<! second ] missing !>\n"},
        {"{State[{Typ[CPU}", ""},
        {"{State[{Nokey[CPU]}]}", "<! Nokey unknown !>\n"},
        {"{Nope[{Typ[CPU]}]}", "<!Nope_unknown>"},
    };
    for (const auto &[text, message] : cases) EXPECT_EQ(Replace(text).message, message) << text;
    Set("Long", "x");
    const std::string key(600, 'k');
    EXPECT_EQ(Replace("{State[{" + key + "[CPU]}]}").message.size(), KX_MESSAGE_SIZE - 1u)
        << "a long message is cut to the buffer";
}

TEST_F(Placeholders, EnumerationOutput) {
    SetList("Typ", {"a", "a", "a"});
    struct Case { const char *mode, *prefix, *expected; };
    const std::vector<Case> cases = {
        {nullptr, "E1", "Warning~Gone~3-x"},
        {"Numeric", "E2", "2~-1~3-x"},
        {"Both", "E3", "2 - Warning~-1 - Gone~3-x"},
        {"numeric", "E4", "Warning~Gone~3-x"},
    };
    for (const Case &c : cases) {
        if (c.mode != nullptr) Set("EnumOutput", c.mode);
        SetList(c.prefix, {"2 - Warning", "-1 - Gone", "3-x"});
        Replace(std::string("{") + c.prefix + "[{Typ[a]}]}");
        EXPECT_EQ(Values((std::string(c.prefix) + "_a").c_str()), c.expected) << c.prefix;
    }
}

TEST_F(Placeholders, SelectionThroughThePage) {
    EXPECT_EQ(Page("{State[{Typ[CPU]}]}|{State_CPU}\n"), "ok|ok\n");
    EXPECT_EQ(Page("{State[{Typ[CPU}} x\n"), "<! first ] missing !>\n{State[{Typ[CPU}} x\n");
}

TEST_F(Placeholders, EmptyConditionControls) {
    int consumed = 0;
    EXPECT_EQ(Control("{=?on:off} rest", "Name", &consumed), "on");
    EXPECT_EQ(consumed, 10);
    Set("Name", "0");
    EXPECT_EQ(Control("{=?on:off}", "Name"), "off");
    EXPECT_EQ(Control("{=?on}", "Name"), "");
    Set("Name", "abc");
    EXPECT_EQ(Control("{=?on:off}", "Name"), "off");
    EXPECT_EQ(Control("{=?on:off}", "nobody"), "on") << "without a this entry";
    EXPECT_EQ(Control("{=?{x}:off}", "Name"), "off") << "branches are not evaluated";
}

TEST_F(Placeholders, ControlsThatAreNone) {
    int consumed = -1;
    EXPECT_EQ(Control("{=no question}", "Name", &consumed), "<null>");
    EXPECT_EQ(consumed, 0);
    EXPECT_EQ(Control("{=x?a:b}", "Name", &consumed), "<null>") << "no operator";
    EXPECT_EQ(consumed, 8);
    EXPECT_EQ(Control("{=x==1?a:b}", "Name", &consumed), "<null>") << "unsupported left operand";
    EXPECT_EQ(Control("{={nobody}==1?a:b}", "Name", &consumed), "b")
        << "a left entry that does not exist is false";
    EXPECT_EQ(Control("{=unclosed", "Name", &consumed), "<null>");
    EXPECT_EQ(consumed, 0);
}

TEST_F(Placeholders, ControlBranches) {
    Set("other", "v");
    EXPECT_EQ(Control("{=_this==1?A:[{other}]}", "Name"), "[v]") << "a branch is evaluated";
    EXPECT_EQ(Control("{=_this==1?A:{=?yes:no}}", "Name"), "yes") << "nested control";
    EXPECT_EQ(Control("{=_this==1?A:is _this!}", "Name"), "is 12!");
    EXPECT_EQ(Control("{=_this==1?A:is _this}", "Name"), "is 12");
    EXPECT_EQ(Control("{=_this==1?A:javascript%3Ago(_this)}", "Name"), "javascript:go(12)");
    EXPECT_EQ(Control("{=_numeric._this==1?A:B}", "Name"), "B");
    EXPECT_EQ(Control("{=_this==1?A:_hex._this}", "Name"), "c") << "a conversion of the value";
    EXPECT_EQ(Control("{=_this==1?A:Hex: _hex.{Name}}", "Name"), "Hex: c")
        << "text before the chain stays in front";
    EXPECT_EQ(_ThisValueIndex, -1);
}

// A "|" in a placeholder's value stays inside one element of the old and new
// lists of "_strchange," and "_strreplace,".
TEST_F(Placeholders, BarsFromValuesStayInsideOneElement) {
    Set("Old", "a|b");
    Set("New", "1|2");
    Set("Name", "xa|bya|b");
    EXPECT_EQ(Control("{=_this!=?_strreplace,{Old},Z._this:}", "Name"), "xZyZ");
    EXPECT_EQ(Control("{=_this!=?_strchange,{Old},N|M._this:}", "Name"), "xNya|b");
    EXPECT_EQ(Control("{=_this!=?_strchange,{Old},{New}._this:}", "Name"), "x{New}ya|b")
        << "the new texts are taken as written";
    EXPECT_EQ(Control("{=_this!=?_strreplace,q|{Old},Y|Z._this:}", "Name"), "xa|bya|b")
        << "once a placeholder is evaluated, every bar of the old texts is data";
}

TEST_F(Placeholders, ComparedControls) {
    struct Case { const char *control, *value, *expected; };
    const std::vector<Case> cases = {
        {"{=_this==12?A:B}", "12", "A"},
        {"{=_this==12?A:B}", "13", "B"},
        {"{=_numeric.{Name}>=10?many:few}", "12", "many"},
        {"{=_numeric.{Name}>=10?many:few}", "5", "few"},
        {"{=_this!=1|12?A:_hex._this}", "12", "A"},
        {"{=_this<5?A:B}", "255", "A"},
        {"{=_numeric._this<5?A:_hex._this}", "255", "ff"},
        {"{=_this==12?{=_this==12?in:out}:B}", "12", "in"},
        {"{=_this=12?A:B}", "12", "B"},
    };
    for (const Case &c : cases) {
        Set("Name", c.value);
        EXPECT_EQ(Control(c.control, "Name"), c.expected) << c.control << " with " << c.value;
    }
}

TEST_F(Placeholders, ComparisonThatDeclaresEntries) {
    SetList("Typ", {"CPU", "Fan", "CPU"});
    std::string text = "{={Typ}==Fan{DEFINE n1 a}{DEFINE n2 b}?yes:no}";
    char *result = nullptr;
    char message[KX_MESSAGE_SIZE] = "";
    CreateValueFromControl(text.data(), list_.count(), 1, &list_.count(), &list_.list(), &result, -1, 2,
                           "}", message);
    EXPECT_EQ(HeapText(result).str(), "no") << "a line with DEFINEs writes nothing: the text is compared as written";
    EXPECT_EQ(Values("n2"), "b") << "the list grew while the comparison ran";
    EXPECT_EQ(Entry("Typ")->WertPosition, 0);
}

TEST_F(Placeholders, FileTest) {
    Set("Dir", dir_.path().c_str());
    EXPECT_EQ(Control("{=_file.{Dir}/x.ini==1?yes:no}", "Name"), "no");
    dir_.Write("x.ini", "|\n");
    EXPECT_EQ(Control("{=_file.{Dir}/x.ini==1?yes:no}", "Name"), "yes");
    EXPECT_EQ(Control("{=_file.{Dir}\\x.ini!=1?yes:no}", "Name"), "no");
}

TEST_F(Placeholders, SelfEvaluatingValueEnds) {
    Set("loop", "{loop}{=_this==1?A:_this!}");
    const std::string page = Page("{loop}{=_this==1?A:_this!}\n");
    EXPECT_EQ(page.substr(page.size() - 3), "!!\n") << "each evaluation adds one mark, up to the bound";
    EXPECT_LT(page.size(), 4096u);
}

TEST_F(Placeholders, ControlOnThePage) {
    EXPECT_EQ(Page("[{Name}{=?on:off}] [{Name}{=_this==1?A:{other}}]\n"), "[on] [{other}]\n");
}

}  // namespace
