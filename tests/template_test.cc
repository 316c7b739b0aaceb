// The template processor: golden pages (an input page, an input list and the
// exact output) in file mode and in string mode, CYCLE blocks and the lists
// they leave behind, copyright comments, page texts and bad templates.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "support/page_engine.h"

namespace {

constexpr const char *kNoMatchingCycle = "<BR>\n<!Warning: /CYCLE ignored (no matching CYCLE) !>\n<BR>\n";

class Template : public kx::test::PageEngine {
protected:
    void SetUp() override {
        PageEngine::SetUp();
        const std::pair<const char *, const char *> values[] = {
            {"user", "bob"}, {"ab", "joined"}, {"query", "a b&c"}, {"img", "my pic"}, {"flag", "1"}, {"a", "abc"},
            {"b", "1"}, {"brace", "{user} <!-- %s %n ~ }"}, {"data", "{user} <!-- %s }"}};
        for (const auto &[name, value] : values) Set(name, value);
        Declare("empty");
        Declare("defaulted", "the default");
        Declare("unset");
        SetList("list", {"x", "y", "z"});
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

struct Golden { const char *what, *page, *expected; };

const Golden kFilePages[] = {
    {"plain line with its line end", "plain line\n", "plain line\n"},
    {"value", "Hello {user}!\n", "Hello bob!\n"},
    {"unknown name", "{nope} and {_nope}\n", "{nope} and {_nope}\n"},
    {"known without value", "[{empty}]\n", "[<nil>]\n"},
    {"default", "[{defaulted}]\n", "[the default]\n"},
    {"empty placeholder", "{}\n", "{}\n"},
    {"JavaScript braces", "function f() { return 1; }\n", "function f() { return 1; }\n"},
    {"doubled is URL-encoded", "?q={{query}}\n", "?q=a+b%26c\n"},
    {"image name", "<img src={img}.gif>\n", "<img src=my%20pic.gif>\n"},
    {"image name with suffix", "{img}_small.jpg\n", "my%20pic_small.jpg\n"},
    {"not an image name", "{img} x.gif\n", "my pic x.gif\n"},
    {"upper-case image ending", "{img}-1.JPG\n", "my%20pic-1.JPG\n"},
    {"the first ending found counts", "{img}.GIF or x.gif\n", "my pic.GIF or x.gif\n"},
    {"too short for an image name", "{img}.gi\n", "my pic.gi\n"},
    {"two lines joined", "<{a\n  b}>\n", "<joined>\n"},
    {"three lines joined", "x {us\n   e\n  r} y\n", "x bob y\n"},
    {"a value is data", "{brace}\n", "{user} <!-- %s %n ~ }\n"},
    {"list shows its current value", "{list}\n", "x\n"},
    {"CycleCount outside a cycle", "{CycleCount}\n", "0\n"},
    {"IF true", "<!{IF flag}>\nshown\n<!{/IF}>\nafter\n", "shown\nafter\n"},
    {"IF on an entry without value", "<!{IF unset}>\nshown\n<!{/IF}>\nafter\n", "after\n"},
    {"IF on an unknown name", "<!{IF nothing}>\nshown\n<!{/IF}>\n", "shown\n"},
    {"IF 0 and 1", "<!{IF 0}>\nA\n<!{/IF}>\n<!{IF 1}>\nB\n<!{/IF}>\n", "B\n"},
    {"ELSE", "<!{IF unset}>\nyes\n<!{/ELSE}>\nno\n<!{/IF}>\nend\n", "no\nend\n"},
    {"== with alternatives", "<!{IF user==ann|bob}>\nA\n<!{/IF}>\n", "A\n"},
    {"== without match", "<!{IF user==ann|bo}>\nA\n<!{/IF}>\nB\n", "B\n"},
    {"~= and ||", "<!{IF a~=ab||b==2}>\nA\n<!{/IF}>\n<!{IF a~=x||b==1}>\nB\n<!{/IF}>\n", "A\nB\n"},
    {"bare alternative", "<!{IF nothing||user==x}>\nA\n<!{/IF}>\n<!{IF empty||b==2}>\nB\n<!{/IF}>\n", "A\n"},
    {"IF line writes nothing", "<!{IF flag}>\n", ""},
    {"text before IF on a line is dropped", "abc <!{IF flag}> def\nx\n", "x\n"},
    {"DEFINE a list", "<!{DEFINE d p~q~r}>\n{d}\n", "p\n"},
    {"DEFINE from a value", "<!{DEFINE d {data}}>\n{d}\n", "{user} <!-- %s }\n"},
    {"DEFINE splits a value at ~", "<!{DEFINE d {brace}}>\n{d}\n", "{user} <!-- %s %n \n"},
    {"DEFINE without value", "{DEFINE d}\n", "{DEFINE d}\n"},
    {"DEFINE inside a skipped part", "<!{IF 0}>\n<!{DEFINE e 5}>\n<!{/IF}>\n{e}\n", "5\n"},
    {"a control that is no control", "{=_x} after\n", "<nil> after\n"},
    {"empty condition", "{flag}{=?on:off} {b}{=?on}\n", "on on\n"},
    {"unfinished at the end", "one\n{user} {ab\n",
     "one\n\n<script language=JavaScript>\n<!--\nalert(\"KX Pagecraft Syntax Error:\\n\\nError line 2: "
     "No matching '}' for '{ab' ...>\");\n// -->\n</script>\n"},
    {"unfinished with quotes, cut to 20", "x {a\"bcdefghijklmnopqrstuvwxyz\n",
     "\n<script language=JavaScript>\n<!--\nalert(\"KX Pagecraft Syntax Error:\\n\\nError line 1: "
     "No matching '}' for '{a\\\"bcdefghijklmnopqr' ...>\");\n// -->\n</script>\n"},
    // cycles
    {"no list value: once, counter 0", "<!{CYCLE}>\nrow {user} {CycleCount}\n<!{/CYCLE}>\n", "row bob 0\n"},
    {"one row per value", "<!{CYCLE}>\n{name}:{CycleCount}\n<!{/CYCLE}>\n", "a:0\nb:1\nc:2\n"},
    {"the longest list counts", "<!{CYCLE}>\n{short}-{name}\n<!{/CYCLE}>\n", "1-a\n2-b\n-c\n"},
    {"a list written late counts", "<!{CYCLE}>\n{user}\n{name}\n<!{/CYCLE}>\n", "bob\na\nbob\nb\nbob\nc\n"},
    {"nested cycle governed by the count entry", "<!{CYCLE}>\n{g}:\n<!{CYCLE g}>\n {v}\n<!{/CYCLE}>\n<!{/CYCLE}>\n",
     "x:\n p\n q\ny:\n r\n"},
    {"CycleCount at each level",
     "<!{CYCLE}>\n{short}{CycleCount}\n<!{CYCLE}>\n[{name}{CycleCount}]\n<!{/CYCLE}>\n<!{/CYCLE}>\n",
     "10\n[a0]\n[b1]\n[c2]\n21\n[a0]\n[b1]\n[c2]\n"},
    {"IF inside a body", "<!{CYCLE}>\n<!{IF flag}>\n{name} on\n<!{/IF}>\n<!{IF unset}>\n{name} off\n<!{/IF}>\n<!{/CYCLE}>\n",
     "a on\nb on\nc on\n"},
    {"an IF false at replay drops the rest of its iteration only",
     "<!{CYCLE}>\n<!{IF name==a|b}>\n{name} yes\n<!{/IF}>\n[{CycleCount}]\n<!{/CYCLE}>\nafter\n",
     "a yes\n[0]\nb yes\n[1]\nafter\n"},
    {"text around the directives", "<table><!{CYCLE}><tr>\n<td>{name}</td>\n</tr><!{/CYCLE}></table>\n",
     "<table><tr>\n<td>a</td>\n</tr><tr>\n<td>b</td>\n</tr><tr>\n<td>c</td>\n</tr></table>\n"},
    {"script comments open the directives", "<script>\nvar a = [];\n//{CYCLE}\na.push(\"{name}\");\n//{/CYCLE}\n</script>\n",
     "<script>\nvar a = [];\na.push(\"a\");\na.push(\"b\");\na.push(\"c\");\n</script>\n"},
    {"text after /CYCLE goes on", "<!{CYCLE}>\n{name}\n<!{/CYCLE}> after {user}\nend\n", "a\nb\nc\nafter bob\nend\n"},
    {"a whole cycle on one line", "<ul><!{CYCLE}><li>{name}</li><!{/CYCLE}></ul>\n", "<ul><li>a</li><li>b</li><li>c</li></ul>\n"},
    {"directives without a comment opener", "[{CYCLE}{name},{/CYCLE}]\n", "[a,b,c,]\n"},
    {"text before a nested CYCLE is written once", "<!{CYCLE}>\n{short}\nhead <!{CYCLE}>\n{name}\n<!{/CYCLE}>\n<!{/CYCLE}>\n",
     "head 1\na\nb\nc\n2\na\nb\nc\n"},
    {"text after a nested /CYCLE stays in the enclosing body",
     "<!{CYCLE}>\n<!{CYCLE}>{name}<!{/CYCLE}>|{short}\n<!{/CYCLE}>\n", "abc|1\nabc|2\n"},
    {"a nested CYCLE after a placeholder", "<!{CYCLE}>\n{short}<!{CYCLE}>{name}<!{/CYCLE}>\n<!{/CYCLE}>\n", "1abc2abc"},
    {"nested cycles side by side",
     "<!{CYCLE}>\n{short}\n<!{CYCLE}>\nA{name}\n<!{/CYCLE}>\n<!{CYCLE}>\nB{w}\n<!{/CYCLE}>\n<!{/CYCLE}>\n",
     "1\nAa\nAb\nAc\nBp\nBq\nBr\n2\nAa\nAb\nAc\nBp\nBq\nBr\n"},
    {"governed cycles side by side",
     "<!{CYCLE}>\n{g}\n<!{CYCLE g}>\nA{v}\n<!{/CYCLE}>\n<!{CYCLE g}>\nB{w}\n<!{/CYCLE}>\n<!{/CYCLE}>\n",
     "x\nAp\nAq\nBp\nBq\ny\nAr\nBr\n"},
    {"/CYCLE without CYCLE", "x<!{/CYCLE}>y\nz\n", "<BR>\n<!Warning: /CYCLE ignored (no matching CYCLE) !>\n<BR>\nz\n"},
    {"a second /CYCLE", "<!{CYCLE}>\n{short}\n<!{/CYCLE}>\n<!{/CYCLE}>\n",
     "1\n2\n<BR>\n<!Warning: /CYCLE ignored (no matching CYCLE) !>\n<BR>\n"},
    {"a template ending inside a body writes nothing of it", "before\n<!{CYCLE}>\n{name}\n", "before\n"},
    {"an entry of another kind writes the value of the iteration", "<!{CYCLE kind}>\n{name}={kind}/{plain}\n<!{/CYCLE}>\n",
     "a=K0/P0\nb=K1/P1\nc=/\n"},
    {"a DEFINE in a body takes effect at each iteration", "<!{CYCLE}>\n<!{DEFINE d {name}{name}}>\n{d}.{name}\n<!{/CYCLE}>\n",
     "aa.a\nbb.b\ncc.c\n"},
    {"the fifth level is text",
     "<!{CYCLE}>\n<!{CYCLE}>\n<!{CYCLE}>\n<!{CYCLE}>\n<!{CYCLE}>\n{short}\n<!{/CYCLE}>\n<!{/CYCLE}>\n<!{/CYCLE}>\n"
     "<!{/CYCLE}>\n<!{/CYCLE}>\nend\n",
     "<!{CYCLE}>\n1\n<!{/CYCLE}>\n<!{CYCLE}>\n2\n<!{/CYCLE}>\nend\n"},
    {"rows of known, unknown and other placeholders",
     "<!{CYCLE}>\n<i>{name}|{nope}|{user}|{img}.gif|{short}{=?y:n}|{list}</i>\n<!{/CYCLE}>\n",
     "<i>a|{nope}|bob|my%20pic.gif|y|x</i>\n<i>b|{nope}|bob|my%20pic.gif|y|y</i>\n<i>c|{nope}|bob|my%20pic.gif|n|z</i>\n"},
    {"an entry declared by a skipped DEFINE in a row is found by the next rows",
     "<!{CYCLE}>\n[{late}{name}]\n<!{IF name==b}>\n<!{DEFINE late {name}}>\n<!{/IF}>\n<!{/CYCLE}>\n",
     "[{late}a]\n[ab]\n[bc]\n"},
    {"four levels nest", "<!{CYCLE}>\n<!{CYCLE}>\n<!{CYCLE}>\n<!{CYCLE}>\n{short}{CycleCount}\n<!{/CYCLE}>\n<!{/CYCLE}>\n"
     "<!{/CYCLE}>\n<!{/CYCLE}>\n", "10\n21\n"},
};

TEST_F(Template, FileModePages) {
    for (const Golden &g : kFilePages) {
        Fresh();
        EXPECT_EQ(Page(g.page), g.expected) << g.what;
    }
}

const Golden kStrings[] = {
    {"value", "a {user} b", "a bob b"}, {"no placeholder at all", "plain", "<null>"}, {"unknown name", "{nope}", "{nope}"},
    {"known without value", "{empty}", ""}, {"doubled", "{{query}}", "a+b%26c"},
    {"IF prefix kept when short", "<!{IF flag}>", "<!"}, {"IF prefix withheld when long", "abcdefg<!{IF flag}>", "<null>"},
    {"unfinished: the whole pending text", "x {a b", "<BR>\n<!Error line 1: No matching '}' for 'x {a b' ...>\n<BR>\n"},
    {"unfinished after a finished one", "{user} {a\n b \n",
     "<BR>\n<!Error line 1: No matching '}' for ' {a\n b' ...>\n<BR>\n"},
    {"a value is data", "[{brace}]", "[{user} <!-- %s %n ~ }]"}, {"one-line cycle", "<!{CYCLE}>{name},<!{/CYCLE}>", "a,b,c,"},
    {"cycle counter", "<!{CYCLE}>{CycleCount}{short};<!{/CYCLE}>.", "01;12;."},
    {"/CYCLE without CYCLE", "x<!{/CYCLE}>y", kNoMatchingCycle}, {"unbalanced cycle", "x <!{CYCLE}>{name}", "x "},
};

TEST_F(Template, StringModeResults) {
    for (const Golden &g : kStrings) {
        EXPECT_EQ(Evaluate(g.page), g.expected) << g.what;
        EXPECT_EQ(Entry("name")->WertPosition, 0) << g.what;
    }
    EXPECT_EQ(Evaluate("{list}", 1), "y") << "a fixed cycle index picks a list value";
    EXPECT_EQ(Evaluate("{list}", 3), "x") << "an index past the list gives the current value";
    EXPECT_EQ(Evaluate("{CycleCount}", -2), "0");
    iErsetzungsAnfang = -1;
    EXPECT_EQ(Page("a {user}\n{b\n"), "a {user}\n{b\n") << "undefined markers copy the text";
    EXPECT_EQ(Evaluate("{user}"), "<null>");
}

TEST_F(Template, ListsLeftBehind) {
    Page("<!{DEFINE d p~q~r}>\n");
    EXPECT_EQ(Values("d"), "[p][q][r]");
    EXPECT_EQ(Entry("d")->Art, 'j') << "DEFINE makes a list entry";
    EXPECT_EQ(Page("<!{CYCLE}>\n{name}{short}\n<!{/CYCLE}>\n{name}{short}\n"), "a1\nb2\nc\na1\n");
    EXPECT_EQ(Entry("name")->WertPosition, 0) << "back at the first value";
    EXPECT_EQ(Entry("short")->WertPosition, 0);
    Page("<!{CYCLE}>\n{g}\n<!{CYCLE g}>\n{v}\n<!{/CYCLE}>\n<!{/CYCLE}>\n");
    EXPECT_EQ(Entry("g")->WertPosition, 0);
    EXPECT_EQ(Entry("gInternalcount")->WertPosition, 0);
    EXPECT_EQ(Entry("v")->WertPosition, 6) << "a governed list stays past r, the last value used";
    EXPECT_EQ(Page("[{v}]\n"), "[]\n") << "nothing behind the list is read";
}

TEST_F(Template, InlineControlSeesTheOffsetOfItsGroup) {
    // The inner list w is compared at the position of the value being written
    // in the flat list: the group before y holds 2 values.
    EXPECT_EQ(Page("<!{CYCLE}>\n{g}:\n<!{CYCLE g}>\n {v}{user}{={w}==r?R:-}\n<!{/CYCLE}>\n<!{/CYCLE}>\n"),
              "x:\n p-\n q-\ny:\n rR\n");
    EXPECT_EQ(Entry("w")->WertPosition, 0);
}

TEST_F(Template, CountEntriesAndIterationBounds) {
    const char *page = "<!{CYCLE}>\n{g}\n<!{CYCLE g}>\n{g}{v}\n<!{/CYCLE}>\n<!{/CYCLE}>\n";
    SetList("gInternalcount", {"0", "-5"});
    EXPECT_EQ(Page(page), "x\nxp\ny\nyq\n") << "a count of zero or below runs the group once";
    Fresh();
    SetList("gInternalcount", {"2147483647", "99999999999999999999"});
    const std::string huge = Page("<!{CYCLE}>\n{g}\n<!{CYCLE g}>\n{v}\n<!{/CYCLE}>\n<!{/CYCLE}>\n");
    EXPECT_EQ(huge.substr(0, 8), "x\np\nq\nr\n");
    // 199,999 inner rows (two iterations went to entering the levels), the
    // rows past r empty; the outer cycle does not reach y.
    EXPECT_EQ(huge.size(), 200004u);
    EXPECT_EQ(huge.find('y'), std::string::npos);
    std::string block, expected;
    for (int i = 0; i < 2000; ++i) {
        block += std::to_string(i) + (i < 1999 ? "~" : "");
        expected += "<" + std::to_string(i) + ">\n";
    }
    Page("<!{DEFINE big " + block + "}>\n");
    EXPECT_EQ(Page("<!{CYCLE}>\n<{big}>\n<!{/CYCLE}>\n"), expected) << "a long list";
}

TEST_F(Template, RequestAssignedThenRendered) {
    for (const char *name : {"grp", "grpInternalcount", "srv", "state"}) Declare(name, nullptr, 'j');
    std::string request = kx::test::Terminated({"grp=A~B", "grpInternalcount=1~2", "srv=alpha~beta~gamma", "state=ok~down~ok"});
    WertzuweisungEingabe(4, request.data(), &list_.count(), &list_.list(), "~");
    EXPECT_EQ(Page("<!{CYCLE}>\n<h2>{grp}</h2>\n<!{CYCLE grp}>\n<p>{srv} {state}</p>\n<!{/CYCLE}>\n<!{/CYCLE}>\n"),
              "<h2>A</h2>\n<p>alpha ok</p>\n<h2>B</h2>\n<p>beta down</p>\n<p>gamma ok</p>\n");
}

TEST_F(Template, PagesFilesAndCopyrights) {
    const std::string missing = dir_.path() + "/none.htm";
    EXPECT_EQ(PageAt(missing), missing + " konnte nicht geoeffnet werden\n");
    const std::string reflected = dir_.path() + "/<script>x'\".htm";
    EXPECT_EQ(PageAt(reflected), dir_.path() + "/&lt;script&gt;x&#39;&quot;.htm konnte nicht geoeffnet werden\n");
    dir_.Write("pages/ini/main.ini", "|\ntitle=Main page; see: here\na%20b=spaced\n");
    const std::string page = dir_.Write("pages/main.htm", "<h1>{_txt_title}</h1>\n{_txt_a%20b} {_txt_missing%21}\n");
    EXPECT_EQ(PageAt(page), "<h1>Main page; see: here</h1>\nspaced missing!\n");
    ASSERT_NE(Entry("_txt_a b"), nullptr);
    EXPECT_STREQ(Entry("_txt_a b")->Vorgabe, "spaced");
    EXPECT_EQ(Page("{_txt_x%41}\n", "other.htm"), "xA\n") << "no page text file";
    Set("DeleteCopyright", "yes");
    const Golden pages[] = {
        {"html", "<!-- $Copyright$\n (c) x\n-->\nbody {user}\n", "body bob\n"},
        {"c", "/* $Copyright$\n * x\n */\nbody\n", "body\n"}, {"slashes", "  // $Copyright$\n// x\nbody\n", "body\n"},
        {"no copyright", "<!-- other -->\nbody\n", "<!-- other -->\nbody\n"}, {"to the end", "<!-- $Copyright$\nx\n", ""},
    };
    for (const Golden &g : pages) EXPECT_EQ(Page(g.page), g.expected) << g.what;
    EXPECT_NE(Page("<!-- $Copyright$\n-->\n\n{x\n").find("Error line 4:"), std::string::npos) << "its lines count";
    Set("DeleteCopyright", "no");
    EXPECT_EQ(Page("/* $Copyright$ */\nbody\n"), "/* $Copyright$ */\nbody\n");
}

TEST_F(Template, LongUnbalancedAndDeepTemplates) {
    std::string joined = "{us";
    for (int i = 0; i < 3000; ++i) joined += "\n ";
    EXPECT_EQ(Page(joined + "er}\n"), "bob\n") << "a long logical line joins many lines";
    const std::string open(5000, '{'), close(5000, '}');
    EXPECT_EQ(Page("x" + open + "\n"), "x" + open + "\n");
    const std::string wide(100000, 'w');
    EXPECT_EQ(Page(wide + "{user}\n" + wide + "\n"), wide + "bob\n" + wide + "\n") << "lines wider than a read";
    std::string rows;
    for (int i = 0; i < 20000; ++i) rows += "row\n";
    EXPECT_NE(Page(rows + "{ab\n").find("Error line 20001:"), std::string::npos) << "plain lines count";
    EXPECT_EQ(Page(std::string("a\0b\n{user}\0c\nd\n", 15)), "abobd\n") << "a NUL ends its line's text";
    EXPECT_FALSE(Page("{user" + open + "a" + close + "}\n").empty());
    EXPECT_FALSE(Evaluate(("{DEFINE d " + open + "user" + close + "}").c_str()).empty());
}

// "EscapeHtml" in the definition: values, their URL form and control
// results escaped; template text and "<nil>" as they were. A
// request cannot turn it off: only the default counts.
TEST_F(Template, EscapeHtmlFromTheDefinition) {
    const std::string page =
        "<p title=\"{v}\">{v} {{v}} {unset} {v}{=_stringn._this==x?yes:_this}</p>\n";
    Set("v", "<script>'&\"");
    EXPECT_EQ(Page(page), "<p title=\"<script>'&\"\"><script>'&\" <script%3E%27%26%22 <nil> "
                          "<script>'&\"</p>\n") << "off by default";
    Declare("EscapeHtml", "yes");
    Set("EscapeHtml", "no");
    EXPECT_EQ(Page(page), "<p title=\"&lt;script&gt;&#39;&amp;&quot;\">&lt;script&gt;&#39;&amp;&quot; "
                          "&lt;script%3E%27%26%22 <nil> &lt;script&gt;&#39;&amp;&quot;</p>\n");
}

// Nested selections evaluate their inner texts again at each level: the
// line's budget of evaluations keeps the two inputs that once took minutes
// to a few hundred evaluations, and leaves shallow nesting whole.
TEST_F(Template, NestedSelectionsStayWithinTheLineBudget) {
    for (const char *seed : {"timeout_nested_selections", "timeout_nested_selection_lists"}) {
        const std::string path = std::string(KX_SOURCE_DIR) + "/fuzz/seeds/template_file/" + seed;
        EXPECT_EQ(PageAt(path), kx::test::ReadFile(path)) << seed << " is left as it stands";
    }
    SetList("Names", {"a", "b"});
    SetList("Role", {"web", "storage"});
    Set("Which", "storage");
    EXPECT_EQ(Page("{Names[{Role[{Which}]}]} {Names[{Role[web|storage]}]}\n"), "b b\n");
}

// DeleteComment on a first line and the lines after it; what it returns and
// the line the buffer holds afterwards.
TEST(DeleteComment, Table) {
    struct Case { const char *first, *rest; int result; const char *line; };
    const Case cases[] = {
        {"<!-- $Copyright$\n", "a\n-->\nnext\n", 3, "next\n"}, {"<!-- $Copyright$ -->\n", "a\nb>\nnext\n", 3, "next\n"},
        {"\t /* $Copyright$\n", "*/\nnext\n", 2, "next\n"}, {"// $Copyright$\n", "// more\nnext\n", 2, "next\n"},
        {"// $Copyright$\n", "next\n", 1, "next\n"}, {"<!-- no notice\n", "x\n", 0, "<!-- no notice\n"},
        {"# $Copyright$\n", "x\n", 0, "# $Copyright$\n"}, {"<!-- $Copyright$\n", "a\n", -1, nullptr},
        {"<!-- $Copyright$\n", "-->\n", -1, nullptr},
    };
    for (const Case &c : cases) {
        std::string rest = c.rest;
        FILE *stream = fmemopen(rest.data(), rest.size(), "r");
        char line[64];
        std::snprintf(line, sizeof line, "%s", c.first);
        EXPECT_EQ(DeleteComment(stream, line, sizeof line), c.result) << c.first << c.rest;
        if (c.line != nullptr) EXPECT_STREQ(line, c.line) << c.first << c.rest;
        std::fclose(stream);
    }
    char line[8] = "x";
    EXPECT_EQ(DeleteComment(nullptr, line, 8), -2);
    EXPECT_EQ(DeleteComment(stdin, nullptr, 8), -2);
    EXPECT_EQ(DeleteComment(stdin, line, 0), -2);
}

}  // namespace
