// CYCLE blocks: golden pages (an input page, an input list and the exact
// output) in file mode and in string mode, the lists left behind, and bad
// templates.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/page_engine.h"

namespace {

using kx::test::PageEngine;

constexpr const char *kNoMatchingCycle =
    "<BR>\n<!Warning: /CYCLE ignored (no matching CYCLE) !>\n<BR>\n";

class Cycle : public PageEngine {
protected:
    void SetUp() override {
        PageEngine::SetUp();
        Set("user", "bob");
        Set("flag", "1");
        Declare("unset");
        SetList("name", {"a", "b", "c"});
        SetList("short", {"1", "2"});
        SetList("g", {"x", "y"});
        SetList("gInternalcount", {"2", "1"});
        SetList("v", {"p", "q", "r"});
        SetList("w", {"p", "q", "r"});
        SetList("kind", {"K0", "K1"}, 'x');
        SetList("plain", {"P0", "P1"}, 'n');
    }
};

struct Golden {
    const char *what;
    const char *page;
    const char *expected;
};

const std::vector<Golden> kPages = {
    {"no list value: once, counter 0", "<!{CYCLE}>\nrow {user} {CycleCount}\n<!{/CYCLE}>\n",
     "row bob 0\n"},
    {"one row per value", "<!{CYCLE}>\n{name}:{CycleCount}\n<!{/CYCLE}>\n", "a:0\nb:1\nc:2\n"},
    {"the longest list counts; the shorter one ends empty",
     "<!{CYCLE}>\n{short}-{name}\n<!{/CYCLE}>\n", "1-a\n2-b\n-c\n"},
    {"a list first written late still counts",
     "<!{CYCLE}>\n{user}\n{name}\n<!{/CYCLE}>\n", "bob\na\nbob\nb\nbob\nc\n"},
    {"nested cycle governed by the count entry",
     "<!{CYCLE}>\n{g}:\n<!{CYCLE g}>\n {v}\n<!{/CYCLE}>\n<!{/CYCLE}>\n", "x:\n p\n q\ny:\n r\n"},
    {"CycleCount at each level",
     "<!{CYCLE}>\n{short}{CycleCount}\n<!{CYCLE}>\n[{name}{CycleCount}]\n<!{/CYCLE}>\n<!{/CYCLE}>\n",
     "10\n[a0]\n[b1]\n[c2]\n21\n[a0]\n[b1]\n[c2]\n"},
    {"IF inside a body",
     "<!{CYCLE}>\n<!{IF flag}>\n{name} on\n<!{/IF}>\n<!{IF unset}>\n{name} off\n<!{/IF}>\n"
     "<!{/CYCLE}>\n",
     "a on\nb on\nc on\n"},
    {"an IF false at replay drops the rest of its iteration only",
     "<!{CYCLE}>\n<!{IF name==a|b}>\n{name} yes\n<!{/IF}>\n[{CycleCount}]\n<!{/CYCLE}>\nafter\n",
     "a yes\n[0]\nb yes\n[1]\nafter\n"},
    {"text before and after the directives",
     "<table><!{CYCLE}><tr>\n<td>{name}</td>\n</tr><!{/CYCLE}></table>\n",
     "<table><tr>\n<td>a</td>\n</tr><tr>\n<td>b</td>\n</tr><tr>\n<td>c</td>\n</tr></table>\n"},
    {"script comments open the directives",
     "<script>\nvar a = [];\n//{CYCLE}\na.push(\"{name}\");\n//{/CYCLE}\n</script>\n",
     "<script>\nvar a = [];\na.push(\"a\");\na.push(\"b\");\na.push(\"c\");\n</script>\n"},
    {"text after /CYCLE goes on after the cycle",
     "<!{CYCLE}>\n{name}\n<!{/CYCLE}> after {user}\nend\n", "a\nb\nc\nafter bob\nend\n"},
    {"a whole cycle on one line", "<ul><!{CYCLE}><li>{name}</li><!{/CYCLE}></ul>\n",
     "<ul><li>a</li><li>b</li><li>c</li></ul>\n"},
    {"directives without a comment opener", "[{CYCLE}{name},{/CYCLE}]\n", "[a,b,c,]\n"},
    {"text before a nested CYCLE is written once",
     "<!{CYCLE}>\n{short}\nhead <!{CYCLE}>\n{name}\n<!{/CYCLE}>\n<!{/CYCLE}>\n",
     "head 1\na\nb\nc\n2\na\nb\nc\n"},
    {"text after a nested /CYCLE stays in the enclosing body",
     "<!{CYCLE}>\n<!{CYCLE}>{name}<!{/CYCLE}>|{short}\n<!{/CYCLE}>\n", "abc|1\nabc|2\n"},
    {"a nested CYCLE after a placeholder on its line",
     "<!{CYCLE}>\n{short}<!{CYCLE}>{name}<!{/CYCLE}>\n<!{/CYCLE}>\n", "1abc2abc"},
    {"nested cycles side by side",
     "<!{CYCLE}>\n{short}\n<!{CYCLE}>\nA{name}\n<!{/CYCLE}>\n<!{CYCLE}>\nB{w}\n<!{/CYCLE}>\n<!{/CYCLE}>\n",
     "1\nAa\nAb\nAc\nBp\nBq\nBr\n2\nAa\nAb\nAc\nBp\nBq\nBr\n"},
    {"governed cycles side by side",
     "<!{CYCLE}>\n{g}\n<!{CYCLE g}>\nA{v}\n<!{/CYCLE}>\n<!{CYCLE g}>\nB{w}\n<!{/CYCLE}>\n<!{/CYCLE}>\n",
     "x\nAp\nAq\nBp\nBq\ny\nAr\nBr\n"},
    {"/CYCLE without CYCLE", "x<!{/CYCLE}>y\nz\n", "<BR>\n<!Warning: /CYCLE ignored (no matching CYCLE) !>\n<BR>\nz\n"},
    {"a second /CYCLE", "<!{CYCLE}>\n{short}\n<!{/CYCLE}>\n<!{/CYCLE}>\n",
     "1\n2\n<BR>\n<!Warning: /CYCLE ignored (no matching CYCLE) !>\n<BR>\n"},
    {"a template ending inside a body writes nothing of it", "before\n<!{CYCLE}>\n{name}\n",
     "before\n"},
    {"an entry of another kind writes the value of the iteration",
     "<!{CYCLE kind}>\n{name}={kind}/{plain}\n<!{/CYCLE}>\n", "a=K0/P0\nb=K1/P1\nc=/\n"},
    {"a DEFINE in a body takes effect at each iteration",
     "<!{CYCLE}>\n<!{DEFINE d {name}{name}}>\n{d}.{name}\n<!{/CYCLE}>\n", "aa.a\nbb.b\ncc.c\n"},
};

TEST_F(Cycle, Pages) {
    for (const Golden &g : kPages) {
        // Each page starts from the same list.
        TearDown();
        SetUp();
        EXPECT_EQ(Page(g.page), g.expected) << g.what;
    }
}

TEST_F(Cycle, ListsAreBackAtTheirFirstValue) {
    EXPECT_EQ(Page("<!{CYCLE}>\n{name}{short}\n<!{/CYCLE}>\n{name}{short}\n"), "a1\nb2\nc\na1\n");
    EXPECT_EQ(Entry("name")->WertPosition, 0);
    EXPECT_EQ(Entry("short")->WertPosition, 0);
}

TEST_F(Cycle, GovernedListStaysAfterTheLastValueUsed) {
    Page("<!{CYCLE}>\n{g}\n<!{CYCLE g}>\n{v}\n<!{/CYCLE}>\n<!{/CYCLE}>\n");
    EXPECT_EQ(Entry("g")->WertPosition, 0);
    EXPECT_EQ(Entry("gInternalcount")->WertPosition, 0);
    EXPECT_EQ(Entry("v")->WertPosition, 6) << "past r, the last value";
    EXPECT_EQ(Page("[{v}]\n"), "[]\n") << "nothing behind the list is read";
}

TEST_F(Cycle, InlineControlSeesTheOffsetOfItsGroup) {
    // The inner list w is compared at the position of the value being written
    // in the flat list: the group before y holds 2 values.
    const char *page =
        "<!{CYCLE}>\n{g}:\n<!{CYCLE g}>\n {v}{user}{={w}==r?R:-}\n<!{/CYCLE}>\n<!{/CYCLE}>\n";
    EXPECT_EQ(Page(page), "x:\n p-\n q-\ny:\n rR\n");
    EXPECT_EQ(Entry("w")->WertPosition, 0);
}

TEST_F(Cycle, FifthLevelIsWrittenAsText) {
    std::string page;
    for (int i = 0; i < 5; ++i) page += "<!{CYCLE}>\n";
    page += "{short}\n";
    for (int i = 0; i < 5; ++i) page += "<!{/CYCLE}>\n";
    page += "end\n";
    EXPECT_EQ(Page(page), "<!{CYCLE}>\n1\n<!{/CYCLE}>\n<!{CYCLE}>\n2\n<!{/CYCLE}>\nend\n");
}

TEST_F(Cycle, FourLevelsNest) {
    std::string page;
    for (int i = 0; i < 4; ++i) page += "<!{CYCLE}>\n";
    page += "{short}{CycleCount}\n";
    for (int i = 0; i < 4; ++i) page += "<!{/CYCLE}>\n";
    EXPECT_EQ(Page(page), "10\n21\n");
}

const std::vector<Golden> kStrings = {
    {"one line", "<!{CYCLE}>{name},<!{/CYCLE}>", "a,b,c,"},
    {"counter", "<!{CYCLE}>{CycleCount}{short};<!{/CYCLE}>.", "01;12;."},
    {"/CYCLE without CYCLE", "x<!{/CYCLE}>y", kNoMatchingCycle},
    {"unbalanced", "x <!{CYCLE}>{name}", "x "},
};

TEST_F(Cycle, StringMode) {
    for (const Golden &g : kStrings) {
        EXPECT_EQ(Evaluate(g.page), g.expected) << g.what;
        EXPECT_EQ(Entry("name")->WertPosition, 0) << g.what;
    }
}

TEST_F(Cycle, ACountEntryOfZeroOrBelowRunsTheGroupOnce) {
    SetList("gInternalcount", {"0", "-5"});
    EXPECT_EQ(Page("<!{CYCLE}>\n{g}\n<!{CYCLE g}>\n{g}{v}\n<!{/CYCLE}>\n<!{/CYCLE}>\n"),
              "x\nxp\ny\nyq\n");
}

TEST_F(Cycle, HugeCountEndsAtTheIterationBound) {
    SetList("gInternalcount", {"2147483647", "99999999999999999999"});
    const std::string page = Page("<!{CYCLE}>\n{g}\n<!{CYCLE g}>\n{v}\n<!{/CYCLE}>\n<!{/CYCLE}>\n");
    EXPECT_EQ(page.substr(0, 8), "x\np\nq\nr\n");
    // 199,999 inner rows (two iterations went to entering the levels), the
    // rows past r empty; the outer cycle does not reach y.
    EXPECT_EQ(page.size(), 200004u);
    EXPECT_EQ(page.find('y'), std::string::npos);
}

TEST_F(Cycle, LongList) {
    std::string block, expected;
    for (int i = 0; i < 2000; ++i) {
        block += std::to_string(i) + '~';
        expected += "<" + std::to_string(i) + ">\n";
    }
    block.pop_back();
    Page("<!{DEFINE big " + block + "}>\n");
    EXPECT_EQ(Page("<!{CYCLE}>\n<{big}>\n<!{/CYCLE}>\n"), expected);
}

TEST_F(Cycle, RequestAssignedThenRendered) {
    for (const char *name : {"grp", "grpInternalcount", "srv", "state"}) Declare(name, nullptr, 'j');
    std::string request;
    for (const char *element : {"grp=A~B", "grpInternalcount=1~2", "srv=alpha~beta~gamma", "state=ok~down~ok"})
        request.append(element).push_back('\0');
    WertzuweisungEingabe(4, request.data(), &list_.count(), &list_.list(), "~");
    const char *page =
        "<!{CYCLE}>\n<h2>{grp}</h2>\n<!{CYCLE grp}>\n<p>{srv} {state}</p>\n<!{/CYCLE}>\n<!{/CYCLE}>\n";
    EXPECT_EQ(Page(page), "<h2>A</h2>\n<p>alpha ok</p>\n<h2>B</h2>\n<p>beta down</p>\n<p>gamma ok</p>\n");
}

}  // namespace
