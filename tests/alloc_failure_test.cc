// The page path with allocation number 1, 2, 3, ... failing: reading the
// definition, assigning the request, declaring an entry and writing the page.
// Built over the test build of the library's objects (core/alloc.h), whose
// allocations can be made to fail; sanitizers catch crashes and leaks.

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "core/alloc.h"
#include "kx_input.h"
#include "kx_list.h"
#include "kx_template.h"

namespace {

// Lines end in NUL bytes; the empty line ends the definition.
constexpr char kDefinition[] =
    "|\0Ersetzungsanfang|n|{\0Ersetzungsende|n|}\0Operator|n|nobody\0"
    "Hosts|j|alpha~beta~gamma\0States|j|up~down~up\0Limit|n|10\0ParameterList|n|\0\0";
constexpr char kRequest[] =
    "Operator=ann%20lee\0Hosts=alpha~beta~gamma\0States=up~down~up\0Limit=12\0"
    "ParameterList=Shown--a%7Cb,,Mode--full\0";
constexpr int kRequestElements = 5;
// The template and the page it gives with memory to spare.
constexpr char kTemplate[] = KX_SOURCE_DIR "/tests/data/alloc_failure/page.htm";
constexpr char kPage[] = KX_SOURCE_DIR "/tests/data/alloc_failure/expected.html";

struct Outcome {
    int read = -1;        // ErmittleEingabe
    int declared = -2;    // AppendToEingabe
    std::string page;     // what ErsetzeUndGebeHtmlDateiAus wrote
    bool failed = false;  // an allocation failed on the way
    long asked = 0;       // allocations asked for
    bool whole = false;   // every entry of the list has its name
};

class AllocationFailure : public ::testing::Test {
protected:
    // One run of the page path with allocations failing from number n on.
    Outcome Run(long n) {
        EingabeElement *list = nullptr;
        int count = 0;
        std::FILE *out = std::tmpfile();
        _Utilsfpout = out;
        kx::core::FailAllocationsFrom(n);
        Outcome o;
        o.read = ErmittleEingabe(kDefinition, &list, &count, nullptr, 0);
        std::string request(kRequest, sizeof kRequest);
        WertzuweisungEingabe(kRequestElements, request.data(), &count, &list, "~");
        o.declared = AppendToEingabe(&count, &list, "~", "Added", 1, "late");
        ErsetzeUndGebeHtmlDateiAus(kTemplate, nullptr, iErsetzungsAnfang, iErsetzungsEnde, &count, &list);
        o.failed = kx::core::AnAllocationFailed();
        o.asked = kx::core::AllocationsSoFar();
        kx::core::FailAllocationsFrom(0);
        o.page = Contents(out);
        std::fclose(out);
        _Utilsfpout = nullptr;
        o.whole = Whole(list, count);
        Forget(list, count);
        return o;
    }

private:
    // Each entry has a name of its recorded length, and each list entry's
    // values lie inside its Wert.
    static bool Whole(const EingabeElement *list, int count) {
        for (int i = 0; i < count; ++i) {
            const EingabeElement &e = list[i];
            if (e.Name == nullptr || std::strlen(e.Name) != e.NameLaenge) return false;
            if (e.Wert == nullptr ? e.WertGesetzt != 0 : e.WertGesetzt < 1) return false;
        }
        return true;
    }
    static std::string Contents(std::FILE *file) {
        std::string text;
        std::rewind(file);
        for (int c; (c = std::fgetc(file)) != EOF;) text.push_back(static_cast<char>(c));
        return text;
    }
    // Releases the list and every process-wide handle that pointed into it.
    static void Forget(EingabeElement *list, int count) {
        KXFreeEingabeList(list, count);
        for (int row = 0; row < SchluesselworteAnzahl; ++row) *Schluesselworte[row].Index = -1;
        _pEingabe = nullptr;
        _pEingabeAnzahl = nullptr;
    }
};

// Every operation on the path keeps its documented results whatever
// allocation fails: ErmittleEingabe 0 or 1, AppendToEingabe 0 or -1, and a
// page identical to the one written with memory to spare whenever no
// allocation failed. The sanitizers see to it that nothing crashes or leaks.
TEST_F(AllocationFailure, PagePathFailingEachAllocationInTurn) {
    const Outcome reference = Run(0);
    ASSERT_EQ(reference.read, 0);
    ASSERT_EQ(reference.declared, 0);
    std::ifstream expected(kPage, std::ios::binary);
    ASSERT_EQ(reference.page, std::string(std::istreambuf_iterator<char>(expected), {}));
    const long total = reference.asked;
    ASSERT_GT(total, 50);
    for (long n = 1; n <= total + 1; ++n) {
        SCOPED_TRACE("allocation " + std::to_string(n) + " of " + std::to_string(total) + " fails");
        const Outcome o = Run(n);
        EXPECT_TRUE(o.read == 0 || o.read == 1);
        EXPECT_TRUE(o.declared == 0 || o.declared == -1);
        EXPECT_TRUE(o.whole);
        EXPECT_EQ(o.failed, n <= total);
        if (!o.failed) EXPECT_EQ(o.page, reference.page);
    }
}

}  // namespace
