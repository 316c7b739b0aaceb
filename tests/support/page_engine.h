// An input list set up for the page engine: the two marker entries "{" and
// "}", the process-wide handles pointing at it, and ways to run templates.
#ifndef KX_TESTS_SUPPORT_PAGE_ENGINE_H
#define KX_TESTS_SUPPORT_PAGE_ENGINE_H

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <string_view>

#include "kx_template.h"
#include "support/kx_test.h"

namespace kx::test {

class PageEngine : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
    // Starts again from the list SetUp makes (each page from the same list).
    void Fresh() {
        TearDown();
        SetUp();
    }

    // Declares name when missing and gives it one value.
    void Set(const char *name, const char *value, char kind = 'n');
    // Gives name the values, laid end to end.
    void SetList(const char *name, std::initializer_list<std::string_view> values, char kind = 'j');
    // Declares name without a value.
    void Declare(const char *name, const char *defaultText = nullptr, char kind = 'n');
    EingabeElement *Entry(const char *name);
    // The values of name, each in brackets.
    std::string Values(const char *name) const { return list_.ValuesOf(name); }

    // The page written for a template with this content (file mode).
    std::string Page(const std::string &content, const std::string &relative = "page.htm");
    // The page of the template at path.
    std::string PageAt(const std::string &path);
    // String mode; "<null>" when nothing was produced.
    std::string Evaluate(const char *text, int cycleIndex = -1);

    InputList list_;
    TempDir dir_;
};

}  // namespace kx::test

#endif
