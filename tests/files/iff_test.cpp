#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "files/file_stream.h"
#include "files/iff_parser.h"
#include "files/iff_writer.h"
#include "model/exception.h"
#include "test_support.h"

namespace sondrel {
namespace {

using Bytes = std::vector<uint8_t>;

UniqueFile StreamWith(const Bytes& bytes) {
    UniqueFile file(std::tmpfile());
    std::fwrite(bytes.data(), 1, bytes.size(), file.get());
    std::rewind(file.get());
    return file;
}

// The whole stream; the position is left at its start.
Bytes ContentsOf(FILE* file) {
    std::fflush(file);
    Bytes bytes(static_cast<size_t>(StreamLength(file)));
    std::rewind(file);
    EXPECT_EQ(std::fread(bytes.data(), 1, bytes.size(), file), bytes.size());
    std::rewind(file);
    return bytes;
}

template <typename E>
void ExpectFailure(const std::function<void()>& action, const std::string& message) {
    try {
        action();
        ADD_FAILURE() << "nothing thrown, expected \"" << message << "\"";
    } catch (const E& e) {
        // A second line may give the system's reason.
        const std::string what = e.what();
        EXPECT_EQ(what.substr(0, what.find('\n')), message);
    }
}

TEST(IFFBlocks, WriterPadsAndPatchesLittleEndianWhileParserReadsBigEndian) {
    UniqueFile file(std::tmpfile());
    IFFWriter writer;
    writer.Attach(file.get());
    writer.WriteData("x", 1);
    writer.StartBlock("OUTR");
    writer.WriteData("abc", 3);
    writer.StartBlock("INNR");  // nested, after an odd number of bytes
    writer.WriteData("d", 1);
    writer.EndBlock();
    writer.EndBlock();
    writer.StartBlock("SIZE", 1000);  // never patched
    writer.WriteData("z", 1);
    writer.EndBlock();
    EXPECT_EQ(writer.Length(), 33);
    writer.Close();
    const Bytes expected = {'x', 0, 'O', 'U', 'T', 'R', 13, 0, 0, 0, 'a', 'b', 'c', 0, 'I', 'N', 'N',
                            'R', 1, 0, 0, 0, 'd', 0, 'S', 'I', 'Z', 'E', 0xE8, 0x03, 0, 0, 'z'};
    ASSERT_EQ(ContentsOf(file.get()), expected);

    IFFParser parser;
    parser.Open(file.get());
    char data[3];
    parser.ReadNextBytes(data, 1);
    EXPECT_EQ(parser.MatchBlockStart("OUTR"), 13u << 24);
    parser.ReadData(data, 3);
    parser.MatchBlockStart("INNR", 1u << 24);
    parser.ReadData(data, 1);
    EXPECT_EQ(parser.MatchBlockStart("SIZE"), 0xE8030000u);
    parser.ReadData(data, 1);
    parser.MatchFileEnd();

    UniqueFile skipped = StreamWith({'A', 'A', 'A', 'A', 0, 0, 0, 1, 'x', 0, 'B', 'B', 'B', 'B', 0, 0, 0, 0});
    parser.Open(skipped.get());
    EXPECT_FALSE(parser.OverparseNextBlock());
    EXPECT_EQ(parser.Position(), 9u);
    EXPECT_TRUE(parser.OverparseNextBlock());
}

TEST(IFFStrings, LengthPrefixesAndTheDigitZero) {
    struct Case { size_t length; Bytes prefix; std::string readBack; };
    std::string as(65536, 'a');
    // A low byte below 128 is the whole length: for 300 the high byte is read as a character.
    const Case cases[] = {{127, {0x7F}, as.substr(0, 127)},      {128, {0x80, 0x00}, as.substr(0, 128)},
                          {384, {0x80, 0x01}, as.substr(0, 384)}, {300, {0x2C, 0x01}, "\x01" + as.substr(0, 43)},
                          {256, {0x00, 0x01}, ""},                {65536, {0x00, 0x00}, ""}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.length);
        EXPECT_EQ(WhyStringWontReadBack(as.substr(0, c.length)).empty(), c.readBack == as.substr(0, c.length));
        UniqueFile file(std::tmpfile());
        IFFWriter writer;
        writer.Attach(file.get());
        writer.WriteString(as.substr(0, c.length));
        EXPECT_EQ(writer.Position(), c.prefix.size() + c.length);
        Bytes bytes = ContentsOf(file.get());
        EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + static_cast<long>(c.prefix.size())), c.prefix);
        IFFParser parser;
        parser.Open(file.get());
        std::string text = "old";
        parser.ReadString(text);
        EXPECT_EQ(text, c.readBack);
    }

    EXPECT_EQ(WhyStringWontReadBack("A0B"), "it holds the digit 0");
    UniqueFile file = StreamWith({3, 'A', '0', 'B'});
    IFFParser parser;
    parser.Open(file.get());
    std::string text;
    parser.ReadString(text);
    EXPECT_EQ(text, "A");
    EXPECT_TRUE(parser.TryMatchData("B", 1));
}

TEST(IFFParser, TryFormsLeaveThePositionAndFileEndIsExact) {
    UniqueFile file = StreamWith({'A', 'B', 'C', 'D', 0, 0, 0, 2, 'x', 'y'});
    IFFParser parser;
    parser.Open(file.get());
    EXPECT_FALSE(parser.TryMatchBlockStart("WXYZ"));
    EXPECT_FALSE(parser.TryMatchBlockStart("ABCD", 3));
    EXPECT_FALSE(parser.TryMatchData("ABCE", 4));
    EXPECT_TRUE(parser.TryMatchData("", -255));
    char id[4];
    parser.ReadNextBytes(id, 4);
    EXPECT_EQ(std::string(id, 4), "ABCD");

    parser.RestorePosition(0);
    EXPECT_EQ(parser.TryMatchBlockStart("ABCD"), std::optional<uint32_t>(2));
    EXPECT_FALSE(parser.TryReadNextBytes(id, 3));
    EXPECT_TRUE(parser.TryMatchData("x", 1));
    parser.ReadNextBytes(id, 1);
    parser.MatchFileEnd();
}

TEST(IFFBlocks, FailuresCarryTheirMessages) {
    auto on = [](std::function<void(IFFParser&)> action) {
        return [action] {
            UniqueFile file = StreamWith({'A', 'B', 'C', 'D', 0, 0, 0, 9, 'x'});
            IFFParser parser;
            parser.Open(file.get());
            action(parser);
        };
    };
    char buffer[16];
    const char* kMatchBlockStart = "IFFParser::MatchBlockStart(): Failed";
    ExpectFailure<FileIOException>(on([&](IFFParser& p) { p.ReadNextBytes(buffer, 10); }),
                                   "IFFParser::ReadNextBytes(): Failed");
    ExpectFailure<ParseException>(on([](IFFParser& p) { p.MatchBlockStart("ABCE"); }), kMatchBlockStart);
    ExpectFailure<ParseException>(on([](IFFParser& p) { p.MatchBlockStart("ABCD", 8); }), kMatchBlockStart);
    ExpectFailure<ParseException>(on([](IFFParser& p) { p.MatchData("ABCDX", 5); }), "IFFParser::MatchData(): Failed");
    ExpectFailure<ParseException>(on([](IFFParser& p) { p.OverparseNextBlock(); }),
                                  "IFFParser::OverparseNextBlock(): Failed");
    ExpectFailure<ParseException>(on([](IFFParser& p) { p.MatchFileEnd(); }), "IFFParser::MatchFileEnd(): Failed");
    ExpectFailure<ParseException>(on([&](IFFParser& p) { p.ReadNextBytes(buffer, 9), p.ReadBlockHeader(); }), "");

    test::ScratchDir dir;
    IFFWriter writer;
    ExpectFailure<FileIOException>([&] { writer.Create((dir / "missing" / "x").string()); },
                                   "IFFWriter::Create(): Can't open file");
    test::WriteBytes(dir / "readonly", {});
    UniqueFile readOnly = OpenFile((dir / "readonly").string(), "rb");
    writer.Attach(readOnly.get());
    ExpectFailure<FileIOException>([&] { writer.WriteData("abc", 3); }, "IFFWriter::WriteData(): Can't write data");
    ExpectFailure<FileIOException>([&] { writer.WriteString("abc"); },
                                   "IFFWriter::WriteData(): Can't write string data");
}

}  // namespace
}  // namespace sondrel
