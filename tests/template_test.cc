// The template processor: golden pages (an input page, an input list and the
// exact output) in file mode and in string mode, CYCLE blocks and the lists
// they leave behind, copyright comments, page texts and bad templates.
#include <gtest/gtest.h>

#include "core/cpu.h"
#if KX_X86_BLOCKS
#include <cpuid.h>
#endif

#include <cstdio>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/page_engine.h"
#include "template/markers.h"
#include "template/template_reader.h"

namespace {

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

// tests/data/template_pages.txt: what, template and page, in file mode.
TEST_F(Template, FileModePages) {
    for (const kx::test::DataRow &row : kx::test::DataTable("template_pages.txt")) {
        Fresh();
        EXPECT_EQ(Page(*row[1]), *row[2]) << *row[0];
    }
}

// tests/data/template_strings.txt: what, template and result, in string mode.
TEST_F(Template, StringModeResults) {
    for (const kx::test::DataRow &row : kx::test::DataTable("template_strings.txt")) {
        EXPECT_EQ(Evaluate(row[1]->c_str()), row[2].value_or("<null>")) << *row[0];
        EXPECT_EQ(Entry("name")->WertPosition, 0) << *row[0];
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
    // Steady rows over two lines: values of every copy length, a list that
    // runs out midway and a text run across the line break.
    const std::vector<std::string> sizes = {"", "abc", "12345678", "0123456789abcdef", "0123456789abcdef!",
                                            std::string(40, 'x')};
    SetList("sizes", {sizes[0], sizes[1], sizes[2], sizes[3], sizes[4], sizes[5]});
    std::string rows;
    for (size_t i = 0; i < sizes.size(); ++i)
        rows += "<" + sizes[i] + "|" + (i < 2 ? std::to_string(i + 1) : "") + ">\n[" + sizes[i] + "]\n";
    EXPECT_EQ(Page("<!{CYCLE}>\n<{sizes}|{short}>\n[{sizes}]\n<!{/CYCLE}>\n{sizes}{short}\n"), rows + "1\n");
    EXPECT_EQ(Entry("sizes")->WertPosition, 0);
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
    const struct { const char *what, *page, *expected; } pages[] = {
        {"html", "<!-- $Copyright$\n (c) x\n-->\nbody {user}\n", "body bob\n"},
        {"c", "/* $Copyright$\n * x\n */\nbody\n", "body\n"}, {"slashes", "  // $Copyright$\n// x\nbody\n", "body\n"},
        {"no copyright", "<!-- other -->\nbody\n", "<!-- other -->\nbody\n"}, {"to the end", "<!-- $Copyright$\nx\n", ""},
    };
    for (const auto &g : pages) EXPECT_EQ(Page(g.page), g.expected) << g.what;
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
    // Lines that the end of the first 64 KiB read cuts: plain, and with a placeholder.
    const std::string head(65533, 'p');
    EXPECT_EQ(Page(head + "\ncut line\nx{user}y\n"), head + "\ncut line\nxboby\n");
    EXPECT_EQ(Page(head + "\na{user}b\n"), head + "\nabobb\n");
    EXPECT_NE(Page(head + "\ncut line\n{ab\n").find("Error line 3:"), std::string::npos) << "cut lines count";
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
    SetList("v", {"<a>", "b&", "'c'", "d"});
    EXPECT_EQ(Page("<!{CYCLE}>\n[{v}|{unset}]\n<!{/CYCLE}>\n"),
              "[&lt;a&gt;|<nil>]\n[b&amp;|<nil>]\n[&#39;c&#39;|<nil>]\n[d|<nil>]\n") << "rows of a cycle";
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

// Both scanners of plain lines find the same whole lines and feeds before the
// first stop, behind leads of feeds or of other bytes that put the stop at
// every place against their 16-, 32-, 64- and 128-byte steps and fill their feed
// counters to the brim (all feeds).
TEST(TemplateReader, PlainLinesBeforeTheStop) {
    struct Row { const char *text; char stop, otherStop; size_t length, feeds, stopAt; };
    const Row rows[] = {
        {"a\nb\n{c\nd\n", '{', '{', 4, 2, 4}, {"no feed {x\n", '{', '{', 0, 0, 8}, {"a\nbc", '{', '{', 2, 1, 4},
        {"x\n<y\n{\n", '{', '<', 2, 1, 2},   {"x\n{y\n<\n", '{', '<', 2, 1, 2},  {"\n\n\n", '{', '{', 3, 3, 3},
        {"", '{', '{', 0, 0, 0},              {"a\nb\n", '{', '\n', 0, 0, 1},
    };
    std::vector<kx::tmpl::PlainScanner> scanners = {kx::tmpl::ScanPlainByteWise};
    for (const kx::tmpl::PlainScanner blocks : {kx::tmpl::Sse2Scanner(), kx::tmpl::Avx2Scanner()})
        if (blocks != nullptr) scanners.push_back(blocks);
    for (const Row &row : rows) {
        for (const size_t lead : {0, 1, 15, 16, 17, 31, 63, 64, 65, 127, 128, 129, 4031, 4032, 8063, 8064, 16200, 16300}) {
            for (const char filler : {'\n', 'x'}) {
                std::string text = std::string(lead, filler) + row.text;
                text.append(kx::tmpl::kScanPadding + 1, '\0');
                const bool feeds = filler == '\n' && row.otherStop != '\n';
                const size_t length = row.length > 0 || feeds ? lead + row.length : 0;
                for (const kx::tmpl::PlainScanner scan : scanners) {
                    const kx::tmpl::PlainLines got = scan(text.data(), row.stop, row.otherStop);
                    EXPECT_EQ(got.length, length) << row.text << " after " << lead << " " << int{filler};
                    EXPECT_EQ(got.feeds, (feeds ? lead : 0) + row.feeds) << row.text << " after " << lead;
                    const bool stopsFirst = lead > 0 && filler == row.otherStop;
                    EXPECT_EQ(got.stop, stopsFirst ? 0 : lead + row.stopAt) << row.text << " after " << lead;
                }
            }
        }
    }
}

#if KX_X86_BLOCKS
// The features the dynamic loader recorded are the processor's own: each
// answer read from the loader agrees with CPUID (and, for AVX2, with the
// registers the operating system saves).
TEST(ProcessorFeatures, AgreeWithCpuid) {
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    ASSERT_NE(__get_cpuid(1, &eax, &ebx, &ecx, &edx), 0);
    const bool ssse3AndPopcnt = (ecx & bit_SSSE3) != 0 && (ecx & bit_POPCNT) != 0;
    bool avx2 = (ecx & bit_OSXSAVE) != 0 && (ecx & bit_AVX) != 0;
    if (avx2) {
        unsigned low = 0, high = 0;
        __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
        avx2 = (low & 6) == 6 && __get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) != 0 && (ebx & bit_AVX2) != 0;
    }
    EXPECT_TRUE(kx::core::HasSse2());
    EXPECT_EQ(kx::core::HasSsse3AndPopcnt(), ssse3AndPopcnt);
    EXPECT_EQ(kx::core::HasAvx2(), avx2);
    EXPECT_EQ(kx::tmpl::Avx2Scanner() != nullptr, avx2);
}
#endif

}  // namespace

// The pairing within a view answers as PairIt does, on every text of up to five
// pieces: nested and stray markers, a close before the first open, and
// "javascript" before a close, inside the window PairIt looks at or across it.
TEST(PairedIn, AgreesWithPairIt) {
    const std::vector<std::string> pieces = {"{", "}", "?", ":", "x", "javascript", "JavaScript:"};
    std::vector<std::string> texts = {""};
    for (size_t from = 0, round = 0; round < 5; ++round) {
        const size_t to = texts.size();
        for (size_t i = from; i < to; ++i)
            for (const std::string &piece : pieces) texts.push_back(texts[i] + piece);
        from = to;
    }
    for (const std::string &text : texts) {
        const char *c = text.c_str();
        for (const auto &[open, close] : {std::pair{'?', ':'}, std::pair{'{', '}'}}) {
            const char markers[] = {open, '\0', close, '\0'};
            const size_t at = kx::tmpl::PairedIn(text, open, close);
            EXPECT_EQ(at == std::string_view::npos ? c : c + at, PairIt(c, markers, markers + 2)) << text;
        }
    }
}
