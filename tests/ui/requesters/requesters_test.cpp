#include "ui/requesters/requesters.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>

#include "test_support.h"
#include "ui/requesters/file_requester.h"
#include "ui/requesters/message_text.h"
#include "ui/requesters/requester_host.h"
#include "ui/requesters_fixture.h"
#include "ui/widgets/list_box.h"
#include "ui/widgets/text_line.h"

namespace sondrel {
namespace {

namespace fs = std::filesystem;

constexpr uint16_t kKeyEscape = TextLine::kKeyEscape;
constexpr uint16_t kKeyReturn = TextLine::kKeyEnter;

using RequestersTest = RequesterFixture;

TEST_F(RequestersTest, QuestionIsAnsweredByEitherButtonReturnOrEscape) {
    struct Case {
        const char* what;
        std::function<void()> answer;
        bool expected;
    };
    const Case cases[] = {
        {"click on the first button", [this] { ClickWidget(kMessageWindowId, 0); }, true},
        {"click on the second button", [this] { ClickWidget(kMessageWindowId, 1); }, false},
        {"Return on the focused first button", [this] { QueueKey(kKeyReturn); }, true},
        {"Tab, then Return", [this] { QueueKey(kKeyTab); QueueKey(kKeyReturn); }, false},
        {"Tab, then Space", [this] { QueueKey(kKeyTab); QueueKey(kKeySpace, ' '); }, false},
        {"Escape", [this] { QueueKey(kKeyEscape); }, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Then([&] {
            const Window* window = toolkit.FindWindow(kMessageWindowId);
            ASSERT_NE(window, nullptr);
            EXPECT_EQ(window->Title(), "Requester");
            EXPECT_FALSE(main->Active());
            c.answer();
        });
        EXPECT_EQ(requesters.AskQuestion("Go on?", "Yes", "No"), c.expected);
        EXPECT_EQ(toolkit.FindWindow(kMessageWindowId), nullptr);
        EXPECT_TRUE(main->Active());
        EXPECT_LT(host.frames, ScriptedHost::kFrameLimit);
        host.frames = 0;
    }
}

TEST_F(RequestersTest, MessageWrapsAndCentresAndASecondOneReturnsAtOnce) {
    const std::string text(60, 'x');  // one word wider than the wrapping width
    bool second = true;
    Then([&] {
        const Window* window = toolkit.FindWindow(kMessageWindowId);
        ASSERT_NE(window, nullptr);
        const Gorb_Rect& r = window->Rect();
        EXPECT_NEAR(r.x + r.w / 2, kScreenWidth / 2, 1);
        EXPECT_NEAR(r.y + r.h / 2, kScreenHeight / 2, 1);
        const auto* lines = dynamic_cast<const MessageText*>(window->Widgets().front().get());
        ASSERT_NE(lines, nullptr);
        EXPECT_EQ(lines->Lines().size(), 2u);
        second = requesters.AskQuestion("again?", "Yes", "No");
        ClickWidget(kMessageWindowId, 0);
    });
    requesters.ShowMessage("Look:\n" + text);
    EXPECT_FALSE(second);
    EXPECT_EQ(toolkit.FindWindow(kMessageWindowId), nullptr);
}

TEST_F(RequestersTest, CloseRequestIsHandedToTheHostWhichMayEndTheRequester) {
    Then([&] { Queue(kGorbCloseRequest); });
    Then([&] {
        EXPECT_EQ(host.closeRequests, 1);
        EXPECT_NE(toolkit.FindWindow(kMessageWindowId), nullptr);  // the host said stay
        host.quitOnClose = true;
        Queue(kGorbCloseRequest);
    });
    EXPECT_FALSE(requesters.AskQuestion("Go on?", "Yes", "No"));
    EXPECT_EQ(host.closeRequests, 2);
    EXPECT_EQ(toolkit.FindWindow(kMessageWindowId), nullptr);
}

class FileRequesterTest : public RequestersTest {
protected:
    void SetUp() override {
        RequestersTest::SetUp();
        saved = fs::current_path();
        fs::current_path(dir.Path());
        home = std::make_unique<test::ScopedEnv>("HOME", (dir / "home").string());
    }
    void TearDown() override { fs::current_path(saved); }
    std::string Request(bool save) { return requesters.RequestFile({"*.sdrltk"}, "Files", save, ".sdrltk"); }
    TextLine& NameEntry() { return *static_cast<TextLine*>(Find(kFileRequesterWindowId, FileRequester::kNameId)); }
    ListBox& List() { return *static_cast<ListBox*>(Find(kFileRequesterWindowId, FileRequester::kListId)); }
    std::vector<std::string> FolderShown() {
        return static_cast<MessageText*>(Find(kFileRequesterWindowId, FileRequester::kFolderId))->Lines();
    }
    void TypeName(const std::string& name) {
        for (char c : name) QueueKey(0x10, static_cast<uint8_t>(c));
        QueueKey(kKeyReturn);
    }

    test::ScratchDir dir;
    fs::path saved;
    std::unique_ptr<test::ScopedEnv> home;
};

TEST_F(FileRequesterTest, SavingAddsTheDefaultExtensionUnlessTheNameEndsWithIt) {
    for (const auto& [typed, chosen] : {std::pair{"song", "song.sdrltk"}, std::pair{"SONG.SDRLTK", "SONG.SDRLTK"},
                                        std::pair{"tune.sdr", "tune.sdr.sdrltk"}}) {
        Then([&, typed = typed] {
            const Window* window = toolkit.FindWindow(kFileRequesterWindowId);
            ASSERT_NE(window, nullptr);
            EXPECT_EQ(window->Rect().w, kScreenWidth / 2);
            EXPECT_EQ(window->Rect().h, kScreenHeight * 2 / 3);
            TypeName(typed);
        });
        EXPECT_EQ(Request(true), (dir / chosen).string());
    }
}

TEST_F(FileRequesterTest, NoToOverwritingKeepsTheRequesterOpenWithTheTypedName) {
    std::ofstream(dir / "song.sdrltk") << "old";
    Then([&] { TypeName("song"); });
    Then([&] {
        const Window* question = toolkit.FindWindow(kMessageWindowId);
        ASSERT_NE(question, nullptr);
        const auto* text = dynamic_cast<const MessageText*>(question->Widgets().front().get());
        ASSERT_NE(text, nullptr);
        std::string joined;
        for (const std::string& line : text->Lines()) joined += (joined.empty() ? "" : " ") + line;
        EXPECT_EQ(joined, "The file song.sdrltk already exists. Shall it be overwritten?");
        ClickWidget(kMessageWindowId, 1);
    });
    Then([&] {
        EXPECT_EQ(toolkit.FindWindow(kMessageWindowId), nullptr);
        ASSERT_NE(toolkit.FindWindow(kFileRequesterWindowId), nullptr);
        EXPECT_EQ(NameEntry().Text(), "song");
        ClickWidget(kFileRequesterWindowId, FileRequester::kAcceptId);
    });
    Then([&] { ClickWidget(kMessageWindowId, 0); });
    EXPECT_EQ(Request(true), (dir / "song.sdrltk").string());
}

TEST_F(FileRequesterTest, QuittingDuringTheOverwriteQuestionCancelsBoth) {
    std::ofstream(dir / "song.sdrltk") << "old";
    host.quitOnClose = true;
    Then([&] { TypeName("song.sdrltk"); });
    Then([&] {
        ASSERT_NE(toolkit.FindWindow(kMessageWindowId), nullptr);
        Queue(kGorbCloseRequest);
    });
    EXPECT_EQ(Request(true), "");
    EXPECT_EQ(host.closeRequests, 1);
    EXPECT_TRUE(toolkit.Stack().size() == 1 && main->Active());
}

TEST_F(FileRequesterTest, LoadingWalksDirectoriesAndRefusesMissingFilesWithAMessage) {
    fs::create_directories(dir / "sub" / "inner");
    std::ofstream(dir / "sub" / "tune.sdrltk") << "x";
    std::ofstream(dir / "sub" / "notes.txt") << "x";
    ASSERT_EQ(::mkfifo((dir / "sub" / "pipe").c_str(), 0600), 0);
    const fs::path sub = fs::canonical(dir / "sub");
    Then([&] {
        EXPECT_EQ(FolderShown(), std::vector<std::string>{fs::current_path().string()});
        TypeName("sub");
    });
    Then([&] {
        EXPECT_EQ(fs::current_path(), sub);
        EXPECT_EQ(FolderShown(), std::vector<std::string>{sub.string()});
        EXPECT_EQ(NameEntry().Text(), "");
        ASSERT_GE(List().LineCount(), 2);
        TypeName("missing.sdrltk");
    });
    // A missing name, then one that is no file: each is told and the requester stays.
    const auto refused = [&](const std::string& name, const std::vector<std::string>& lines) {
        Then([&, name, lines] {
            const Window* message = toolkit.FindWindow(kMessageWindowId);
            ASSERT_NE(message, nullptr);
            EXPECT_EQ(message->Title(), "Message");
            const auto* text = dynamic_cast<const MessageText*>(message->Widgets().front().get());
            ASSERT_NE(text, nullptr);
            EXPECT_EQ(text->Lines(), lines);
            ClickWidget(kMessageWindowId, 0);
        });
        Then([&, name] {
            EXPECT_EQ(toolkit.FindWindow(kMessageWindowId), nullptr);
            ASSERT_NE(toolkit.FindWindow(kFileRequesterWindowId), nullptr);
            EXPECT_EQ(NameEntry().Text(), name);
        });
    };
    refused("missing.sdrltk", {"File not found.", "missing.sdrltk"});
    Then([&] {
        NameEntry().SetText("");
        TypeName("pipe");
    });
    refused("pipe", {"This is not a file.", "pipe is a named pipe."});
    Then([&] { QueueKey(kKeyEscape); });
    EXPECT_EQ(Request(false), "");
    EXPECT_EQ(fs::current_path(), sub);  // the next requester opens here

    // Lines: "inner", "tune.sdrltk", then the drives. A double click on the
    // file chooses it.
    const auto lineCentre = [&](int line) {
        const ListBox& list = List();
        for (int y = list.Rect().y; y < list.Rect().y + list.Rect().h; ++y)
            if (list.LineAt({list.Rect().x + 10, y}) == line) return Point{list.Rect().x + 10, y + 2};
        ADD_FAILURE() << "line " << line << " is not shown";
        return Point{};
    };
    Then([&] { ClickWidget(kFileRequesterWindowId, FileRequester::kParentId); });
    Then([&] {
        EXPECT_EQ(fs::current_path(), fs::canonical(dir.Path()));
        ClickAt(kFileRequesterWindowId, lineCentre(0));  // "sub"
        QueueKey(kKeyReturn);                                 // the list has the focus
    });
    Then([&] {
        EXPECT_EQ(fs::current_path(), sub);
        ClickAt(kFileRequesterWindowId, lineCentre(1));
        ClickAt(kFileRequesterWindowId, lineCentre(1));
    });
    EXPECT_EQ(Request(false), (sub / "tune.sdrltk").string());
}

}  // namespace
}  // namespace sondrel
