// Follows XML files that grow, end anywhere, are rotated and are truncated.
#include <tova/extras/follow.hpp>

#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <poll.h>
#include <random>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using tova::extras::follow_error;
using tova::extras::follow_event;
using tova::extras::xml_follower;
using tova::strings::ustring8;

std::string rendered(const follow_event& event) {
    const std::string place = std::to_string(event.depth) + "@" + std::to_string(event.line) + " ";
    std::string text;
    switch (event.kind) {
    case follow_event::start:
        text = place + "<" + event.name;
        for (const auto& attribute : event.attributes)
            text += " " + attribute.first + "=[" + attribute.second + "]";
        return text + ">";
    case follow_event::text:
        return place + event.name + ": [" + event.content + "]";
    case follow_event::end:
        return place + "</" + event.name + ">";
    case follow_event::error:
        return place + "error " + tova::extras::name(event.error_code);
    case follow_event::rotated:
        return "rotated";
    }
    return "";
}

// The events that are available now, one per line.
std::string take(xml_follower& follower) {
    std::string found;
    follow_event event;
    while (follower.poll(event))
        found += rendered(event) + "\n";
    return found;
}

class ExtrasFollow : public ::testing::Test {
protected:
    std::string path(const char* name = "log.xml") const { return m_directory.path() + "/" + name; }
    void append(const std::string& bytes) const {
        std::ofstream(path(), std::ios::app | std::ios::binary) << bytes;
    }
    void write(const std::string& bytes) const { std::ofstream(path(), std::ios::binary) << bytes; }
    // The events of a complete document.
    std::string whole(const std::string& document,
                      const std::vector<ustring8>& resume_at = {}) const {
        std::remove(path().c_str());
        append(document);
        xml_follower follower(path(), resume_at);
        return take(follower);
    }

private:
    test_support::temporary_directory m_directory;
};

const std::vector<ustring8> no_names;

// Documents and their events. The tests below cut each of them at every byte.
struct document {
    const char* title;
    std::string bytes;
    std::vector<ustring8> resume_at;
    const char* events;
};

const document documents[] = {
    {"a log", R"(<?xml version="1.0" encoding="UTF-8"?>
<log host="one">
  <entry level="info">listening &amp; waiting</entry>
  <entry level='warning'/>
  <entry>
    <code>7</code>
    <where file="a.cpp" line="3"/>
  </entry>
</log>
)",
     no_names,
     R"(1@2 <log host=[one]>
2@3 <entry level=[info]>
2@3 entry: [listening & waiting]
2@3 </entry>
2@4 <entry level=[warning]>
2@4 </entry>
2@5 <entry>
3@6 <code>
3@6 code: [7]
3@6 </code>
3@7 <where file=[a.cpp] line=[3]>
3@7 </where>
2@5 </entry>
1@9 </log>
)"},
    {"no declaration, a byte order mark and mixed content",
     "\xEF\xBB\xBF<r>one<b>two</b> three <i/>\n<!-- four --> five</r>", no_names,
     "1@1 <r>\n1@1 r: [one]\n2@1 <b>\n2@1 b: [two]\n2@1 </b>\n1@1 r: [ three ]\n2@1 <i>\n"
     "2@1 </i>\n1@1 r: [\n five]\n1@2 </r>\n"},
    {"references everywhere",
     "<r><e a='&#228;&lt;&quot;' b=\"'&apos;&#x1F600;\" c=''>&#32;&amp;&gt; &#x20AC;&#10;</e></r>",
     no_names,
     "1@1 <r>\n2@1 <e a=[\xC3\xA4<\"] b=[''\xF0\x9F\x98\x80] c=[]>\n"
     "2@1 e: [ &> \xE2\x82\xAC\n]\n2@1 </e>\n1@1 </r>\n"},
    {"comments, instructions and CDATA sections",
     "<?xml version='1.0'?><!-- <r> --><?style <x>?><!DOCTYPE r [<!-- > ' --><!ENTITY a '>'>]>"
     "<r><!----><e>a<![CDATA[<b>&amp;]]]]>c<!-- - > -->d<?e e?></e><![CDATA[ ]]><!-- --></r><!-- "
     "-->\n",
     no_names,
     "1@1 <r>\n2@1 <e>\n2@1 e: [a<b>&amp;]]c"
     "d]\n2@1 </e>\n1@1 r: [ ]\n1@1 </r>\n"},
    {"names that the parser of the library lacks",
     "<l:log xmlns:l='u'><l:e-1 x.y='1' _t='2'><_t>3</_t></l:e-1><include>4</include>"
     "<l:log/><a_c/></l:log>",
     no_names,
     "1@1 <l:log xmlns:l=[u]>\n2@1 <l:e-1 x.y=[1] _t=[2]>\n3@1 <_t>\n3@1 _t: [3]\n3@1 </_t>\n"
     "2@1 </l:e-1>\n2@1 <include>\n2@1 include: [4]\n2@1 </include>\n2@1 <l:log>\n2@1 </l:log>\n"
     "2@1 <a_c>\n2@1 </a_c>\n1@1 </l:log>\n"},
    {"spaces in tags", "<r >\n<e\n\ta = \"1\"\n  b\t=\n'2' /  ></r\n>", no_names,
     "1@1 <r>\n0@2 error syntax_error\n"},
    {"more spaces in tags", "<r >\n<e\n\ta = \"1\"\n  b\t=\n'2' /><f></f ></r\n>", no_names,
     "1@1 <r>\n2@2 <e a=[1] b=[2]>\n2@2 </e>\n2@5 <f>\n2@5 </f>\n1@5 </r>\n"},
    {"every kind of byte at the beginning of a text", "<r>><e>/</e>=<e>></e>-<e a='>'/>\"</r>",
     no_names,
     "1@1 <r>\n1@1 r: [>]\n2@1 <e>\n2@1 e: [/]\n2@1 </e>\n1@1 r: [=]\n2@1 <e>\n2@1 e: [>]\n"
     "2@1 </e>\n1@1 r: [-]\n2@1 <e a=[>]>\n2@1 </e>\n1@1 r: [\"]\n1@1 </r>\n"},
    {"an empty root", "<?xml version='1.0'?><include/>", no_names,
     "1@1 <include>\n1@1 </include>\n"},
    {"an end tag that does not match", "<r><a/><b><c></b></c><d/></r>", no_names,
     "1@1 <r>\n2@1 <a>\n2@1 </a>\n0@1 error mismatched_end_tag\n"},
    {"an end tag before the root", "</r>", no_names, "0@1 error mismatched_end_tag\n"},
    {"a second attribute of a name", "<r><a/>\n<e x='1' y='' x='2'/><b/></r>", no_names,
     "1@1 <r>\n2@1 <a>\n2@1 </a>\n0@2 error duplicate_attribute\n"},
    {"text that is no document", "one <r/>", no_names, "0@1 error not_xml\n"},
    {"another encoding", "<?xml version='1.0' encoding='UTF-16'?><r/>", no_names,
     "0@1 error unsupported_encoding\n"},
    {"a known encoding", "<?xml version='1.0' encoding=\"US-Ascii\" ?><r/>", no_names,
     "1@1 <r>\n1@1 </r>\n"},
    {"text after the root", "<r></r>\n <!-- --> x", no_names,
     "1@1 <r>\n1@1 </r>\n0@2 error data_after_root\n"},
    {"an element after the root", "<r/><s/>", no_names,
     "1@1 <r>\n1@1 </r>\n0@1 error data_after_root\n"},
    {"a missing quote", "<r><e a=1/></r>", no_names, "1@1 <r>\n0@1 error missing_quote\n"},
    {"a missing equals sign", "<r><e a b='1'/></r>", no_names,
     "1@1 <r>\n0@1 error missing_equals\n"},
    {"an unknown entity", "<r><e>a&nbsp;b</e></r>", no_names,
     "1@1 <r>\n0@1 error invalid_reference\n"},
    {"an open reference", "<r><e/>&ampersandampersand;</r>", no_names,
     "1@1 <r>\n2@1 <e>\n2@1 </e>\n0@1 error invalid_reference\n"},
    {"a surrogate", "<r a='&#xD800;'/>", no_names, "0@1 error invalid_reference\n"},
    {"two hyphens in a comment", "<r>\n<!-- a -- b --><e/></r>", no_names,
     "1@1 <r>\n0@2 error syntax_error\n"},
    {"a < in a value", "<r><e a='<'/></r>", no_names, "1@1 <r>\n0@1 error syntax_error\n"},
    {"a document type in the root", "<r><!DOCTYPE r></r>", no_names,
     "1@1 <r>\n0@1 error syntax_error\n"},
    {"errors to go on after",
     R"(<log>
<entry>one</entry>
<entry a='1' a='2'>lost <entry>two</entry></entry>
<entry>three</entry>
<other><entry><inner></entry></other>
<entry>four</entry>
<entry>lost & gone</entry>
<other/>
<entry>five<!-- -- --></entry>
<entry>six</entry>
</log>
)",
     {"entry"},
     R"(1@1 <log>
2@2 <entry>
2@2 entry: [one]
2@2 </entry>
0@3 error duplicate_attribute
2@3 <entry>
2@3 entry: [two]
2@3 </entry>
0@3 error mismatched_end_tag
2@4 <entry>
2@4 entry: [three]
2@4 </entry>
0@5 error mismatched_end_tag
2@6 <entry>
2@6 entry: [four]
2@6 </entry>
0@7 error invalid_reference
0@9 error syntax_error
2@10 <entry>
2@10 entry: [six]
2@10 </entry>
1@11 </log>
)"},
    {"an error before the end",
     "<l:og><e/></e>\n<f></l:og >\n",
     {"e"},
     "1@1 <l:og>\n2@1 <e>\n2@1 </e>\n0@1 error mismatched_end_tag\n1@2 </l:og>\n"},
    {"an error in the root's start tag",
     "<r a='1' a='2'><e/></r>",
     {"e"},
     "1@1 <r a=[1]>\n0@1 error duplicate_attribute\n2@1 <e>\n2@1 </e>\n1@1 </r>\n"},
};

TEST_F(ExtrasFollow, ReportsTheEventsOfADocument) {
    for (const document& each : documents)
        EXPECT_EQ(each.events, whole(each.bytes, each.resume_at)) << each.title;
}

// The kernel needs a few milliseconds to close a follower, so the documents are followed in turn.
TEST_F(ExtrasFollow, ReportsTheSameEventsWhereverTheFileIsCut) {
    std::vector<std::thread> threads;
    unsigned number = 0;
    for (const document& each : documents)
        threads.emplace_back(
            [&each](const std::string& file) {
                for (std::size_t cut = 0; cut <= each.bytes.size(); ++cut) {
                    std::remove(file.c_str());
                    std::ofstream(file, std::ios::binary) << each.bytes.substr(0, cut);
                    xml_follower follower(file, each.resume_at);
                    std::string found = take(follower);
                    found += take(follower);
                    std::ofstream(file, std::ios::app | std::ios::binary) << each.bytes.substr(cut);
                    found += take(follower);
                    EXPECT_EQ(each.events, found) << each.title << ", cut at byte " << cut;
                }
            },
            path(std::to_string(++number).c_str()));
    for (std::thread& each : threads)
        each.join();
}

TEST_F(ExtrasFollow, ReportsTheSameEventsByteByByte) {
    for (const document& each : documents) {
        SCOPED_TRACE(each.title);
        std::remove(path().c_str());
        xml_follower follower(path(), each.resume_at);
        std::string found;
        for (const char byte : each.bytes) {
            append(std::string(1, byte));
            found += take(follower);
        }
        EXPECT_EQ(each.events, found);
    }
}

// Documents of several hundred KiB, which exceed every buffer, in random pieces.
TEST_F(ExtrasFollow, ReportsTheSameEventsOfLargeDocuments) {
    std::mt19937 random(7);
    const auto below = [&random](unsigned limit) {
        return static_cast<unsigned>(random() % limit);
    };
    for (int round = 0; round < 3; ++round) {
        std::string bytes = "<log>\n";
        std::string expected = "1@1 <log>\n";
        unsigned line = 2;
        while (bytes.size() < 400000) {
            const std::string at = "@" + std::to_string(line) + " ";
            const unsigned length = below(20) == 0 ? below(120000) : below(200);
            std::string raw;
            std::string text;
            while (text.size() < length) {
                const bool is_reference = below(6) == 0;
                raw += is_reference ? "&lt;" : below(9) == 0 ? " " : "t";
                text += is_reference ? '<' : raw.back();
            }
            if (!text.empty() && text.find_first_not_of(' ') == std::string::npos)
                raw = text = "x";
            if (below(3) == 0) {  // directly in the root
                bytes += "<e/>" + raw + "<f/>\n";
                expected += "2" + at + "<e>\n2" + at + "</e>\n";
                expected += text.empty() ? "" : "1" + at + "log: [" + text + "]\n";
                expected += "2" + at + "<f>\n2" + at + "</f>\n";
            } else {
                const std::string value(below(50) == 0 ? below(25000) : below(30), 'v');
                bytes += "<e a='" + value + "'><g>" + raw + "</g></e>\n";
                expected += "2" + at + "<e a=[" + value + "]>\n3" + at + "<g>\n";
                expected += text.empty() ? "" : "3" + at + "g: [" + text + "]\n";
                expected += "3" + at + "</g>\n2" + at + "</e>\n";
            }
            ++line;
        }
        bytes += "</log>";
        expected += "1@" + std::to_string(line) + " </log>\n";
        EXPECT_TRUE(expected == whole(bytes)) << round;

        std::remove(path().c_str());
        xml_follower follower(path());
        std::string found;
        for (std::size_t at = 0; at < bytes.size();) {
            const unsigned count = 1 + below(below(2) == 0 ? 300 : 90000);
            append(bytes.substr(at, count));
            at += count;
            found += take(follower);
        }
        EXPECT_TRUE(expected == found) << round;
    }
}

TEST_F(ExtrasFollow, RejectsATagOfMoreThan30000Bytes) {
    const auto element = [](std::size_t size) {
        return "<e a='" + std::string(size - std::string("<e a=''>").size(), 'v') + "'>";
    };
    EXPECT_EQ("1@1 <r>\n2@1 <e a=[" + std::string(29992, 'v') + "]>\n2@1 </e>\n1@1 </r>\n",
              whole("<r>" + element(30000) + "</e></r>"));
    EXPECT_EQ("1@1 <r>\n0@1 error too_long\n", whole("<r>" + element(30001) + "</e></r>"));
    EXPECT_EQ("1@1 <r>\n0@1 error too_long\n", whole("<r><" + std::string(30000, 'n')));
    // The same data, one byte shorter: the tag could still end.
    EXPECT_EQ("1@1 <r>\n", whole("<r><" + std::string(29999, 'n')));
    EXPECT_EQ("1@1 <r>\n0@1 error too_long\n2@1 <f>\n2@1 </f>\n1@1 </r>\n",
              whole("<r>" + element(100000) + "</e><f/></r>", {"f"}));
}

TEST_F(ExtrasFollow, HoldsBackUnfinishedInput) {
    append("<log><entry>one");
    xml_follower follower(path());
    EXPECT_EQ("1@1 <log>\n", take(follower));
    append("</entry>");
    EXPECT_EQ("2@1 <entry>\n2@1 entry: [one]\n2@1 </entry>\n", take(follower));
    append("two");
    EXPECT_EQ("", take(follower));
    append("<entry>");
    EXPECT_EQ("1@1 log: [two]\n", take(follower));
}

TEST_F(ExtrasFollow, WaitsForAFileThatDoesNotExistYet) {
    xml_follower follower(path());
    EXPECT_EQ("", take(follower));
    append("<r/>");
    EXPECT_EQ("1@1 <r>\n1@1 </r>\n", take(follower));
}

TEST_F(ExtrasFollow, ReportsOnceThatTheFileCannotBeOpened) {
    ::mkdir(path().c_str(), 0700);
    xml_follower follower(path());
    EXPECT_EQ("0@0 error cannot_open\n", take(follower));
    EXPECT_EQ("", take(follower));
    std::remove(path().c_str());
    append("<r/>");
    EXPECT_EQ("1@1 <r>\n1@1 </r>\n", take(follower));
}

TEST_F(ExtrasFollow, RaisesIfTheDirectoryCannotBeWatched) {
    EXPECT_THROW(xml_follower(path() + "/no/such"), std::system_error);
}

TEST_F(ExtrasFollow, ContinuesWithANewFileOfTheSameName) {
    append("<log><entry>1</entry>");
    xml_follower follower(path());
    EXPECT_EQ("1@1 <log>\n2@1 <entry>\n2@1 entry: [1]\n2@1 </entry>\n", take(follower));
    ASSERT_EQ(0, std::rename(path().c_str(), path("log.1").c_str()));
    std::ofstream(path("log.1"), std::ios::app) << "<entry>2</entry>";
    EXPECT_EQ("2@1 <entry>\n2@1 entry: [2]\n2@1 </entry>\n", take(follower));

    // Bytes that are added before the new file appears belong to the old one.
    std::ofstream(path("log.1"), std::ios::app) << "<entry/><half";
    append("<log id='2'>\n");
    EXPECT_EQ("2@1 <entry>\n2@1 </entry>\n0@1 error incomplete\nrotated\n1@1 <log id=[2]>\n",
              take(follower));
    append("</log>");
    EXPECT_EQ("1@2 </log>\n", take(follower));

    // The file is replaced immediately, after the end of the document.
    std::ofstream(path("new")) << "<log/>";
    ASSERT_EQ(0, std::rename(path("new").c_str(), path().c_str()));
    EXPECT_EQ("rotated\n1@1 <log>\n1@1 </log>\n", take(follower));
}

TEST_F(ExtrasFollow, StartsOverIfTheFileIsTruncated) {
    append("<log><entry>1</entry>");
    xml_follower follower(path());
    EXPECT_EQ("1@1 <log>\n2@1 <entry>\n2@1 entry: [1]\n2@1 </entry>\n", take(follower));
    write("<log id='2'>");
    EXPECT_EQ("rotated\n1@1 <log id=[2]>\n", take(follower));
    // The new content is longer than the old.
    write("<log id='3'><entry/><entry/></log>");
    EXPECT_EQ("rotated\n1@1 <log id=[3]>\n2@1 <entry>\n2@1 </entry>\n2@1 <entry>\n2@1 </entry>\n"
              "1@1 </log>\n",
              take(follower));
    write("");
    EXPECT_EQ("rotated\n", take(follower));
    EXPECT_EQ("", take(follower));
    append("no document");
    EXPECT_EQ("0@1 error not_xml\n", take(follower));
    append("<r/>");
    EXPECT_EQ("", take(follower));
    write("<r/>");
    EXPECT_EQ("rotated\n1@1 <r>\n1@1 </r>\n", take(follower));
}

TEST_F(ExtrasFollow, WaitsUntilThereIsAnEvent) {
    append("<log>");
    xml_follower follower(path());
    std::thread writer([this] {
        for (const char* bytes : {"<entry>", "1", "</entry>", "</log>"}) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            append(bytes);
        }
    });
    std::string found;
    follow_event event;
    do {
        ASSERT_TRUE(follower.next(event));
        found += rendered(event) + "\n";
    } while (event.kind != follow_event::end || event.depth != 1);
    writer.join();
    EXPECT_EQ("1@1 <log>\n2@1 <entry>\n2@1 entry: [1]\n2@1 </entry>\n1@1 </log>\n", found);
}

TEST_F(ExtrasFollow, WaitsForTheNextFile) {
    append("<log>");
    xml_follower follower(path());
    EXPECT_EQ("1@1 <log>\n", take(follower));
    std::thread writer([this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        std::rename(path().c_str(), path("log.1").c_str());
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        append("<log id='2'>");
    });
    follow_event event;
    ASSERT_TRUE(follower.next(event));
    EXPECT_EQ("rotated", rendered(event));
    ASSERT_TRUE(follower.next(event));
    EXPECT_EQ("1@1 <log id=[2]>", rendered(event));
    writer.join();
}

TEST_F(ExtrasFollow, StopsFromAnotherThread) {
    xml_follower follower(path());
    std::thread stopper([&follower] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        follower.stop();
    });
    follow_event event;
    EXPECT_FALSE(follower.next(event));
    stopper.join();
    append("<r/>");
    EXPECT_TRUE(follower.is_stopped());
    EXPECT_FALSE(follower.next(event));
    EXPECT_EQ("1@1 <r>\n1@1 </r>\n", take(follower));
}

xml_follower* stopped_by_signal = nullptr;

TEST_F(ExtrasFollow, StopsFromASignalHandler) {
    xml_follower follower(path());
    stopped_by_signal = &follower;
    const auto before = std::signal(SIGALRM, [](int) { stopped_by_signal->stop(); });
    ::ualarm(20000, 0);
    follow_event event;
    EXPECT_FALSE(follower.next(event));
    std::signal(SIGALRM, before);
}

TEST_F(ExtrasFollow, HasADescriptorForEventLoops) {
    append("<log>");
    xml_follower follower(path());
    EXPECT_EQ("1@1 <log>\n", take(follower));
    pollfd wanted = {follower.descriptor(), POLLIN, 0};
    EXPECT_EQ(0, ::poll(&wanted, 1, 0));
    append("<entry/>");
    EXPECT_EQ(1, ::poll(&wanted, 1, 1000));
    EXPECT_EQ("2@1 <entry>\n2@1 </entry>\n", take(follower));
    EXPECT_EQ(0, ::poll(&wanted, 1, 0));
}

// A follower of a file that does not change sleeps and never wakes up.
TEST_F(ExtrasFollow, DoesNotPoll) {
    append("<log>");
    xml_follower follower(path());
    EXPECT_EQ("1@1 <log>\n", take(follower));
    std::atomic<long> wakeups{-1};
    std::thread waiting([&] {
        rusage before;
        rusage after;
        ::getrusage(RUSAGE_THREAD, &before);
        follow_event event;
        follower.next(event);
        ::getrusage(RUSAGE_THREAD, &after);
        wakeups = after.ru_nvcsw - before.ru_nvcsw;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    follower.stop();
    waiting.join();
    EXPECT_LE(wakeups, 10);
}

TEST_F(ExtrasFollow, LeavesNoTemporaryFile) {
    ASSERT_EQ(0, ::setenv("TMPDIR", path("").c_str(), 1));
    {
        append("<log><e a='1' a='2'/><e/></log>");
        xml_follower follower(path(), {"e"});
        take(follower);
        std::remove(path().c_str());
        EXPECT_NE(0, ::rmdir(path("").c_str()));
    }
    ::unsetenv("TMPDIR");
    EXPECT_EQ(0, ::rmdir(path("").c_str()));
    ::mkdir(path("").c_str(), 0700);
}

TEST(ExtrasFollowError, HasANameForEveryNumber) {
    EXPECT_STREQ("none", tova::extras::name(follow_error::none));
    EXPECT_STREQ("too_long", tova::extras::name(follow_error::too_long));
    EXPECT_STREQ("cannot_open", tova::extras::name(follow_error::cannot_open));
    EXPECT_STREQ("unknown", tova::extras::name(static_cast<follow_error>(99)));
}

TEST(ExtrasFollowEvent, FindsAnAttribute) {
    follow_event event;
    event.attributes.emplace_back("a", "1");
    EXPECT_EQ("1", event.attribute("a"));
    EXPECT_EQ("", event.attribute("b"));
    EXPECT_EQ("2", event.attribute("b", "2"));
}

}  // namespace
