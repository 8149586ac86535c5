#include <gmock/gmock.h>

#include "Ferrivane/IncomingLinks.h"
#include "tests/support/Files.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class IncomingLinks : public ::testing::Test {
  protected:
    // What a single operand becomes; "skipped" when it becomes nothing.
    std::string linkFrom(const std::string& operand) const {
        const auto links = ferrivane::IncomingLinks::fromOperands({operand}, dir.path()).links;
        if (links.empty()) return "skipped";
        return links.size() == 1 ? links[0] : "several";
    }
    std::string fileUrl(const std::string& encodedName) const {
        return "file://" + dir.path().string() + "/" + encodedName;
    }

    const test::TempDir dir;
};

TEST_F(IncomingLinks, OperandThatBeginsWithASchemeIsALinkAsItStands) {
    for (const char* operand : {
             "https://work.example/",
             "http://work.example/a b",
             "HTTPS://WORK.EXAMPLE/",
             "mailto:somebody@work.example",
             "a+b-c.d9:x",
             "x:",
             "localhost:8080",
             "file:///etc/hosts",
             "javascript:alert(1)",
             "https://work.example/\n\r\t",
             "https://work.example/\xFF\xC3(",
             "https://work.example/\u202E\u2066",
             "https:no-slashes",
             "ferrivanes:x",
         }) {
        EXPECT_EQ(linkFrom(operand), operand);
    }
}

TEST_F(IncomingLinks, OtherTextsAreSkippedWhereNoFileHasTheName) {
    const struct {
        const char* name;
        std::string operand;
    } rows[] = {
        {"a word", "work.example"},
        {"nothing", ""},
        {"a blank", " "},
        {"a scheme alone, without its colon", "https"},
        {"no scheme before the colon", ":x"},
        {"a digit first", "1a:x"},
        {"a character that schemes do not have", "a_b:x"},
        {"a letter beyond ASCII", "é:x"},
        {"white space before a link", " https://work.example/"},
        {"a path to nothing", "/no/such/file"},
        {"longer than any path", std::string(100'000, 'x')},
        {"a path below a file", "/dev/null/x"},
    };
    for (const auto& row : rows) EXPECT_EQ(linkFrom(row.operand), "skipped") << row.name;
}

TEST_F(IncomingLinks, OptionsAreNeverLinks) {
    test::writeText(dir / "-x", "");
    for (const char* operand : {"-", "-x", "--agent", "--x:y", "-x:https://a/"}) {
        EXPECT_EQ(linkFrom(operand), "skipped") << operand;
    }
    EXPECT_EQ(linkFrom("./-x"), fileUrl("-x"));
}

TEST_F(IncomingLinks, SwitchesBehindWhiteSpaceAreNeverLinks) {
    for (const char* operand : {" -x", "\t--x", "\n-x:y", "\v-", "\f\r-x"}) {
        EXPECT_EQ(linkFrom(operand), "skipped") << operand;
    }
}

TEST_F(IncomingLinks, OwnSchemeInAnyCaseIsNoLink) {
    for (const char* operand :
         {"ferrivane:", "ferrivane://settings", "FERRIVANE:x", "FerriVane:"}) {
        EXPECT_EQ(linkFrom(operand), "skipped") << operand;
    }
}

TEST_F(IncomingLinks, NameOfAFileBecomesItsUrl) {
    std::filesystem::create_directory(dir / "folder");
    for (const char* name : {"page.html", "a page.html", "100%.html", "what?#.html", "ä.html",
                             "folder/inner.html", "\xFF.html", "line\nbreak"}) {
        test::writeText(dir / name, "");
    }
    std::filesystem::create_symlink("page.html", dir / "link.html");
    const struct {
        const char* name;
        std::string operand;
        std::string url;
    } rows[] = {
        {"relative", "page.html", fileUrl("page.html")},
        {"absolute", dir / "page.html", fileUrl("page.html")},
        {"a blank", "a page.html", fileUrl("a%20page.html")},
        {"a percent sign", "100%.html", fileUrl("100%25.html")},
        {"marks that end a path in a URL", "what?#.html", fileUrl("what%3F%23.html")},
        {"beyond ASCII", "ä.html", fileUrl("%C3%A4.html")},
        {"invalid UTF-8", "\xFF.html", fileUrl("%FF.html")},
        {"a line break", "line\nbreak", fileUrl("line%0Abreak")},
        {"in a folder", "folder/inner.html", fileUrl("folder/inner.html")},
        {"dots that lead nowhere", "./folder/../page.html", fileUrl("page.html")},
        {"doubled slashes", "folder//inner.html", fileUrl("folder/inner.html")},
        {"a folder", "folder", fileUrl("folder")},
        {"a symbolic link keeps its name", "link.html", fileUrl("link.html")},
    };
    for (const auto& row : rows) EXPECT_EQ(linkFrom(row.operand), row.url) << row.name;
}

TEST_F(IncomingLinks, DotsBehindASymbolicLinkLeadWhereTheSystemSays) {
    std::filesystem::create_directories(dir / "real/inner");
    std::filesystem::create_symlink("real/inner", dir / "link");
    test::writeText(dir / "real/page.html", "");
    test::writeText(dir / "decoy.html", "");
    EXPECT_EQ(linkFrom("link/../page.html"), fileUrl("real/page.html"));
    EXPECT_EQ(linkFrom("link/../decoy.html"), "skipped");
}

TEST_F(IncomingLinks, SchemeWinsOverAFileOfTheSameName) {
    std::filesystem::create_directory(dir / "http:");
    test::writeText(dir / "http:/work.example", "");
    EXPECT_EQ(linkFrom("http:/work.example"), "http:/work.example");
    EXPECT_EQ(linkFrom("./http:/work.example"), fileUrl("http:/work.example"));
}

TEST_F(IncomingLinks, DanglingSymbolicLinkIsNoFile) {
    std::filesystem::create_symlink("nowhere", dir / "dangling");
    EXPECT_EQ(linkFrom("dangling"), "skipped");
}

TEST_F(IncomingLinks, ComeInTheOrderOfTheOperands) {
    test::writeText(dir / "b.html", "");
    const auto links = [this](const std::vector<std::string>& operands) {
        return ferrivane::IncomingLinks::fromOperands(operands, dir.path()).links;
    };
    EXPECT_THAT(links({"--agent", "https://c/", "b.html", "nothing", "https://a/", "https://c/"}),
                ElementsAre("https://c/", fileUrl("b.html"), "https://a/", "https://c/"));
    EXPECT_THAT(links({}), IsEmpty());
    EXPECT_THAT(links({"--agent", "x"}), IsEmpty());
}

TEST_F(IncomingLinks, OneOfOurOwnAsksForTheSettings) {
    const auto asks = [this](const std::vector<std::string>& operands) {
        return ferrivane::IncomingLinks::fromOperands(operands, dir.path()).askForSettings;
    };
    EXPECT_TRUE(asks({"ferrivane:"}));
    EXPECT_TRUE(asks({"FERRIVANE://anything?x=y"}));
    EXPECT_TRUE(asks({"https://a/", "Ferrivane:settings", "https://b/"}));
    EXPECT_FALSE(asks({"https://a/", "--agent", "ferrivane", "ferrivanes:x"}));
    EXPECT_FALSE(asks({}));
}

TEST(FileUrl, EncodesWhatAPathMayNotHoldInAUrl) {
    const struct {
        const char* name;
        std::string path;
        const char* url;
    } rows[] = {
        {"root", "/", "file:///"},
        {"unreserved characters", "/aZ09-._~", "file:///aZ09-._~"},
        {"sub-delimiters, colon and at sign", "/!$&'()*+,;=:@", "file:///!$&'()*+,;=:@"},
        {"brackets and the rest of ASCII", "/[]\\^`{|}\"<>",
         "file:///%5B%5D%5C%5E%60%7B%7C%7D%22%3C%3E"},
        {"controls", "/\x01\x1F\x7F", "file:///%01%1F%7F"},
        {"an encoding is encoded again", "/%41", "file:///%2541"},
        {"two slashes at the start", "//host/x", "file:////host/x"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ferrivane::IncomingLinks::fileURL(row.path), row.url) << row.name;
    }
}

}  // namespace
}  // namespace ferrivane
