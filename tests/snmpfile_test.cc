// Trap file companion: reading whole, broken and binary trap files, writing
// them so that readers never see a part of one.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "companion/libSnmpFile.h"
#include "support/kx_test.h"

namespace {

const std::string kHead = "KXSNMPTRAP 1\n";

// The records of one read as "oid|type|value" lines (value bytes as read).
std::vector<std::string> Lines(const KXSnmpVar *records, int count) {
    std::vector<std::string> lines;
    for (int i = 0; i < count; ++i)
        lines.push_back(std::string(records[i].Oid) + "|" + records[i].Type + "|" +
                        std::string(records[i].Value, KXSnmpFileValueLength(records, i)));
    return lines;
}

TEST(TrapFileText, WholeBrokenAndBinaryFiles) {
    struct Case {
        std::string text;
        int result;
        std::vector<std::string> lines;
    };
    const std::string mac("|OCTETSTRING|\x00\x19\x99\x0A\x0B\x0C", 19);
    const std::vector<Case> cases = {
        {kHead + "\t\t\n1.3.6.1.4.1.99999\tIPADDRESS\t10.0.0.1\n1.3.6.1.4.1.99999.5\tOCTETSTRING\t%00%19%99%0a%0B%0C\nEND\n",
         3, {"||", "1.3.6.1.4.1.99999|IPADDRESS|10.0.0.1", "1.3.6.1.4.1.99999.5" + mac}},
        {"KXSNMPTRAP 1\r\n# a note\r\n\r\n1.3\tINTEGER\t%25 and %7C\r\nEND\r\n", 1, {"1.3|INTEGER|% and |"}},
        {kHead + "END\n", KX_SNMPFILE_EMPTY, {}},
        {"", KX_SNMPFILE_NOT_A_TRAP, {}},
        {kHead, KX_SNMPFILE_NOT_A_TRAP, {}},                                 // cut before its end line
        {kHead + "1.3\tINTEGER\t5\nEN", KX_SNMPFILE_NOT_A_TRAP, {}},
        {kHead + "1.3\tINTEGER\t5", KX_SNMPFILE_NOT_A_TRAP, {}},
        {kHead + "1.3\tINTEGER\n" + "END\n", KX_SNMPFILE_NOT_A_TRAP, {}},   // two fields
        {kHead + "1.3\tINTEGER\t5\t6\nEND\n", KX_SNMPFILE_NOT_A_TRAP, {}},  // four fields
        {kHead + "1.3\tINTEGER\t%G1\nEND\n", KX_SNMPFILE_NOT_A_TRAP, {}},
        {kHead + "1.3\tINTEGER\t%4\nEND\n", KX_SNMPFILE_NOT_A_TRAP, {}},
        {kHead + "END\nmore\n", KX_SNMPFILE_NOT_A_TRAP, {}},
        {std::string("\x7f" "ELF\x02\x01\x00\x00\n\t\t\nEND\n", 16), KX_SNMPFILE_NOT_A_TRAP, {}},
    };
    for (const Case &c : cases) {
        KXSnmpVar *records = reinterpret_cast<KXSnmpVar *>(&records);
        const int n = KXSnmpFileReadText(c.text.data(), c.text.size(), &records);
        EXPECT_EQ(n, c.result) << c.text;
        EXPECT_EQ(Lines(records, n), c.lines) << c.text;
        EXPECT_EQ(records == nullptr, n < 1) << c.text;
        EXPECT_EQ(KXSnmpFileValueLength(records, n), 0u);
        KXSnmpFileFreeResources(records);
    }
    EXPECT_EQ(KXSnmpFileReadText("x", 1, nullptr), KX_SNMPFILE_BAD_ARGUMENT);
    EXPECT_EQ(KXSnmpFileRead(-1, nullptr, nullptr, 0), KX_SNMPFILE_BAD_ARGUMENT);
}

TEST(TrapFileDisk, WrittenWholeAndReadBack) {
    const kx::test::TempDir dir;
    const std::string path = dir.path() + "/T0001.42";
    const std::string value("\x00\x19\x99\x0A\x0B\x0C", 6);
    const KXSnmpVar records[] = {{nullptr, const_cast<char *>("TIMETICKS"), const_cast<char *>("12")},
                                 {const_cast<char *>("1.3.6.1.4.1.99999"), nullptr, const_cast<char *>("10.0.0.1")},
                                 {const_cast<char *>("1.3.6.1.4.1.99999.5"), const_cast<char *>("OCTETSTRING"),
                                  const_cast<char *>(value.data())}};
    const size_t lengths[] = {2, 8, 6};
    ASSERT_EQ(KXSnmpFileWrite(path.c_str(), records, lengths, 3), 0);
    size_t length = 0;
    kx::test::HeapText text(KXSnmpFileFormatText(records, lengths, 3, &length));
    EXPECT_EQ(std::string(text.get(), length),
              kHead + "\tTIMETICKS\t12\n1.3.6.1.4.1.99999\t\t10.0.0.1\n"
                      "1.3.6.1.4.1.99999.5\tOCTETSTRING\t%00%19%99%0A%0B%0C\nEND\n");
    KXSnmpVar *read = nullptr;
    const int fd = open(path.c_str(), O_RDONLY);
    ASSERT_EQ(KXSnmpFileRead(fd, "ignored", &read, 0), 3);
    close(fd);
    EXPECT_EQ(Lines(read, 3)[2], "1.3.6.1.4.1.99999.5|OCTETSTRING|" + value);
    KXSnmpFileFreeResources(read);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1) << "no temporary file left";
    EXPECT_EQ(KXSnmpFileRead(-1, (dir.path() + "/none").c_str(), &read, 0), KX_SNMPFILE_UNREADABLE);
    EXPECT_EQ(KXSnmpFileWrite((dir.path() + "/no/dir/T1").c_str(), records, lengths, 3), KX_SNMPFILE_UNREADABLE);
    EXPECT_EQ(KXSnmpFileWrite(path.c_str(), nullptr, nullptr, 1), KX_SNMPFILE_BAD_ARGUMENT);
    EXPECT_EQ(KXSnmpFileFormatText(records, nullptr, -1, nullptr), nullptr);
}

// A receiver rewrites one trap file again and again while a reader reads it:
// every read gets one whole version, never a part.
TEST(TrapFileDisk, ReadersNeverSeeAPartOfAFile) {
    const kx::test::TempDir dir;
    const std::string path = dir.path() + "/T0002.7";
    const auto version = [](int count) {
        return std::vector<KXSnmpVar>(static_cast<size_t>(count), KXSnmpVar{const_cast<char *>("1.3.6.1.2.1.1.5.0"),
                                      const_cast<char *>("OCTETSTRING"), const_cast<char *>("a value of some length")});
    };
    const std::vector<KXSnmpVar> small = version(300), large = version(3000);
    ASSERT_EQ(KXSnmpFileWrite(path.c_str(), small.data(), nullptr, 300), 0);
    const pid_t writer = fork();
    ASSERT_GE(writer, 0);
    if (writer == 0) {
        for (int i = 0; i < 40; ++i) {
            const auto &records = i % 2 ? small : large;
            if (KXSnmpFileWrite(path.c_str(), records.data(), nullptr, static_cast<int>(records.size())) != 0) _exit(1);
        }
        _exit(0);
    }
    int partial = 0, reads = 0;
    for (int status = 0; waitpid(writer, &status, WNOHANG) == 0; ++reads) {
        KXSnmpVar *records = nullptr;
        const int n = KXSnmpFileRead(-1, path.c_str(), &records, 0);
        if (n != 300 && n != 3000) ++partial;
        KXSnmpFileFreeResources(records);
    }
    EXPECT_EQ(partial, 0) << "of " << reads << " reads";
    EXPECT_GT(reads, 0);
}

}  // namespace
