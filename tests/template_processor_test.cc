// The template processor: whole pages in file mode and results in string
// mode, each an input page, an input list and the exact output.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "support/page_engine.h"

namespace {

using kx::test::PageEngine;

class Processor : public PageEngine {
protected:
    void SetUp() override {
        PageEngine::SetUp();
        Set("user", "bob");
        Set("ab", "joined");
        Set("query", "a b&c");
        Set("img", "my pic");
        Declare("empty");
        Declare("defaulted", "the default");
        Set("flag", "1");
        Declare("unset");
        Set("a", "abc");
        Set("b", "1");
        SetList("list", {"x", "y", "z"});
        Set("brace", "{user} <!-- %s %n ~ }");
        Set("data", "{user} <!-- %s }");
    }
};

struct Golden {
    const char *what;
    const char *page;
    const char *expected;
};

const std::vector<Golden> kFilePages = {
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
    {"bare alternative", "<!{IF nothing||user==x}>\nA\n<!{/IF}>\n<!{IF empty||b==2}>\nB\n<!{/IF}>\n",
     "A\n"},
    {"IF line writes nothing", "<!{IF flag}>\n", ""},
    {"text before IF on a line is dropped", "abc <!{IF flag}> def\nx\n", "x\n"},
    {"DEFINE a list", "<!{DEFINE d p~q~r}>\n{d}\n", "p\n"},
    {"DEFINE from a value", "<!{DEFINE d {data}}>\n{d}\n", "{user} <!-- %s }\n"},
    {"DEFINE splits a value at ~", "<!{DEFINE d {brace}}>\n{d}\n", "{user} <!-- %s %n \n"},
    {"DEFINE without value", "{DEFINE d}\n", "{DEFINE d}\n"},
    {"DEFINE inside a skipped part", "<!{IF 0}>\n<!{DEFINE e 5}>\n<!{/IF}>\n{e}\n", "5\n"},
    {"/CYCLE without CYCLE", "<!{/CYCLE}>\n",
     "<BR>\n<!Warning: /CYCLE ignored (no matching CYCLE) !>\n<BR>\n"},
    {"a control that is no control", "{=_x} after\n", "<nil> after\n"},
    {"empty condition", "{flag}{=?on:off} {b}{=?on}\n", "on on\n"},
    {"unfinished at the end",
     "one\n{user} {ab\n",
     "one\n\n<script language=JavaScript>\n<!--\nalert(\"KX Pagecraft Syntax Error:\\n\\nError line 2: "
     "No matching '}' for '{ab' ...>\");\n// -->\n</script>\n"},
    {"unfinished with quotes, cut to 20",
     "x {a\"bcdefghijklmnopqrstuvwxyz\n",
     "\n<script language=JavaScript>\n<!--\nalert(\"KX Pagecraft Syntax Error:\\n\\nError line 1: "
     "No matching '}' for '{a\\\"bcdefghijklmnopqr' ...>\");\n// -->\n</script>\n"},
};

TEST_F(Processor, FileModePages) {
    for (const Golden &g : kFilePages) {
        EXPECT_EQ(Page(g.page), g.expected) << g.what;
    }
}

TEST_F(Processor, DefineMakesAListEntry) {
    Page("<!{DEFINE d p~q~r}>\n");
    EXPECT_EQ(Values("d"), "p~q~r");
    ASSERT_NE(Entry("d"), nullptr);
    EXPECT_EQ(Entry("d")->Art, 'j');
}

const std::vector<Golden> kStrings = {
    {"value", "a {user} b", "a bob b"},
    {"no placeholder at all", "plain", "<null>"},
    {"unknown name", "{nope}", "{nope}"},
    {"known without value", "{empty}", ""},
    {"doubled", "{{query}}", "a+b%26c"},
    {"IF prefix kept when short", "<!{IF flag}>", "<!"},
    {"IF prefix withheld when long", "abcdefg<!{IF flag}>", "<null>"},
    {"unfinished: the whole pending text", "x {a b",
     "<BR>\n<!Error line 1: No matching '}' for 'x {a b' ...>\n<BR>\n"},
    {"unfinished after a finished one", "{user} {a\n b \n",
     "<BR>\n<!Error line 1: No matching '}' for ' {a\n b' ...>\n<BR>\n"},
    {"a value is data", "[{brace}]", "[{user} <!-- %s %n ~ }]"},
};

TEST_F(Processor, StringModeResults) {
    for (const Golden &g : kStrings) EXPECT_EQ(Evaluate(g.page), g.expected) << g.what;
}

TEST_F(Processor, StringModeFixedCycleIndexPicksAListValue) {
    EXPECT_EQ(Evaluate("{list}", 1), "y");
    EXPECT_EQ(Evaluate("{list}", 3), "x") << "an index past the list gives the current value";
    EXPECT_EQ(Evaluate("{CycleCount}", -2), "0");
}

TEST_F(Processor, UndefinedMarkersCopyTheText) {
    iErsetzungsAnfang = -1;
    EXPECT_EQ(Page("a {user}\n{b\n"), "a {user}\n{b\n");
    EXPECT_EQ(Evaluate("{user}"), "<null>");
}

TEST_F(Processor, MissingTemplate) {
    const std::string path = dir_.path() + "/none.htm";
    EXPECT_EQ(PageAt(path), path + " konnte nicht geoeffnet werden\n");
    const std::string reflected = dir_.path() + "/<script>x'\".htm";
    EXPECT_EQ(PageAt(reflected), dir_.path() + "/&lt;script&gt;x&#39;&quot;.htm konnte nicht geoeffnet werden\n");
}

// "EscapeHtml" in the definition: values, their URL form and control
// results escaped; template text and "<nil>" as they were. A
// request cannot turn it off: only the default counts.
TEST_F(Processor, EscapeHtmlFromTheDefinition) {
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

TEST_F(Processor, DeleteCopyrightWithEachOpener) {
    Set("DeleteCopyright", "yes");
    const std::vector<Golden> pages = {
        {"html", "<!-- $Copyright$\n (c) x\n-->\nbody {user}\n", "body bob\n"},
        {"c", "/* $Copyright$\n * x\n */\nbody\n", "body\n"},
        {"slashes", "  // $Copyright$\n// x\nbody\n", "body\n"},
        {"no copyright", "<!-- other -->\nbody\n", "<!-- other -->\nbody\n"},
        {"comment to the end", "<!-- $Copyright$\nx\n", ""},
    };
    for (const Golden &g : pages) EXPECT_EQ(Page(g.page), g.expected) << g.what;
    Set("DeleteCopyright", "no");
    EXPECT_EQ(Page("/* $Copyright$ */\nbody\n"), "/* $Copyright$ */\nbody\n");
}

TEST_F(Processor, CopyrightLinesCountForMessages) {
    Set("DeleteCopyright", "Y");
    EXPECT_NE(Page("<!-- $Copyright$\n-->\n\n{x\n").find("Error line 4:"), std::string::npos);
}

TEST_F(Processor, PageTextTable) {
    dir_.Write("pages/ini/main.ini", "|\ntitle=Main page; see: here\na%20b=spaced\n");
    const std::string page = dir_.Write(
        "pages/main.htm", "<h1>{_txt_title}</h1>\n{_txt_a%20b} {_txt_missing%21}\n");
    EXPECT_EQ(PageAt(page), "<h1>Main page; see: here</h1>\nspaced missing!\n");
    ASSERT_NE(Entry("_txt_a b"), nullptr);
    EXPECT_STREQ(Entry("_txt_a b")->Vorgabe, "spaced");
}

TEST_F(Processor, NoPageTextFile) {
    EXPECT_EQ(Page("{_txt_x%41}\n", "other.htm"), "xA\n");
}

TEST_F(Processor, LongLogicalLineJoinsManyLines) {
    std::string page = "{us";
    for (int i = 0; i < 3000; ++i) page += "\n ";
    page += "er}\n";
    EXPECT_EQ(Page(page), "bob\n");
}

TEST_F(Processor, UnbalancedAndDeepTemplates) {
    const std::string open(5000, '{'), close(5000, '}');
    EXPECT_EQ(Page("x" + open + "\n"), "x" + open + "\n");
    const std::string nested = "{user" + open + "a" + close + "}\n";
    EXPECT_FALSE(Page(nested).empty());
    EXPECT_FALSE(Evaluate(("{DEFINE d " + open + "user" + close + "}").c_str()).empty());
}

// Nested selections evaluate their inner texts again at each level: the
// line's budget of evaluations keeps the two inputs that once took minutes
// to a few hundred evaluations, and leaves shallow nesting whole.
TEST_F(Processor, NestedSelectionsStayWithinTheLineBudget) {
    for (const char *seed : {"timeout_nested_selections", "timeout_nested_selection_lists"}) {
        const std::string path = std::string(KX_SOURCE_DIR) + "/fuzz/seeds/template_file/" + seed;
        std::ifstream in(path);
        const std::string content((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        EXPECT_EQ(PageAt(path), content) << seed << " is left as it stands";
    }
    SetList("Names", {"a", "b"});
    SetList("Role", {"web", "storage"});
    Set("Which", "storage");
    EXPECT_EQ(Page("{Names[{Role[{Which}]}]} {Names[{Role[web|storage]}]}\n"), "b b\n");
}

}  // namespace

namespace {

// DeleteComment on a first line and the lines after it; what it returns and
// the line the buffer holds afterwards.
struct CommentCase {
    const char *first;
    const char *rest;
    int result;
    const char *line;
};

TEST(DeleteComment, Table) {
    const std::vector<CommentCase> cases = {
        {"<!-- $Copyright$\n", "a\n-->\nnext\n", 3, "next\n"},
        {"<!-- $Copyright$ -->\n", "a\nb>\nnext\n", 3, "next\n"},
        {"\t /* $Copyright$\n", "*/\nnext\n", 2, "next\n"},
        {"// $Copyright$\n", "// more\nnext\n", 2, "next\n"},
        {"// $Copyright$\n", "next\n", 1, "next\n"},
        {"<!-- no notice\n", "x\n", 0, "<!-- no notice\n"},
        {"# $Copyright$\n", "x\n", 0, "# $Copyright$\n"},
        {"<!-- $Copyright$\n", "a\n", -1, nullptr},
        {"<!-- $Copyright$\n", "-->\n", -1, nullptr},
    };
    for (const CommentCase &c : cases) {
        std::string rest = c.rest;
        FILE *stream = fmemopen(rest.data(), rest.size(), "r");
        char line[64];
        std::snprintf(line, sizeof line, "%s", c.first);
        EXPECT_EQ(DeleteComment(stream, line, sizeof line), c.result) << c.first << c.rest;
        if (c.line != nullptr) {
            EXPECT_STREQ(line, c.line) << c.first << c.rest;
        }
        std::fclose(stream);
    }
}

TEST(DeleteComment, BadArguments) {
    char line[8] = "x";
    EXPECT_EQ(DeleteComment(nullptr, line, 8), -2);
    EXPECT_EQ(DeleteComment(stdin, nullptr, 8), -2);
    EXPECT_EQ(DeleteComment(stdin, line, 0), -2);
}

}  // namespace
