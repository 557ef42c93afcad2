#include "util/Mentor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "LogCapture.h"

namespace {

using util::Mentor;
using util::SharedPtr;

struct Texture : util::Pointee {
    explicit Texture(int id) : id(id) {}
    int id;
};
using TexturePtr = SharedPtr<Texture>;
using TextureMentor = Mentor<Texture>;
using TextureMentorPtr = SharedPtr<TextureMentor>;

struct Listener : util::Pointee {};

// The default mentor is static per resource type: every test leaves it unset.
class MentorTest : public testing::Test {
protected:
    ~MentorTest() override { TextureMentor::SetDefault(nullptr); }

    // A mentor whose loader counts its calls and gives the texture of the given id, or
    // null for id 0.
    TextureMentorPtr Counting(int id) {
        return TextureMentorPtr(new TextureMentor([this, id] {
            ++m_loads;
            return id == 0 ? TexturePtr() : TexturePtr(new Texture(id));
        }));
    }

    // Records "load" and "unload" events of a mentor.
    void Watch(TextureMentor& mentor) {
        mentor.OnLoad().Add(m_listener, [this, &mentor] {
            m_events.push_back("load " + std::to_string(mentor.Get()->id));
        });
        mentor.OnUnload().Add(m_listener, [this, &mentor] {
            m_events.push_back("unload " + std::to_string(mentor.Get()->id));
        });
    }

    int m_loads = 0;
    std::vector<std::string> m_events;
    SharedPtr<Listener> m_listener{new Listener};
};

TEST_F(MentorTest, LoadCallsTheLoaderOnceAndThenTheOnLoadSet) {
    TextureMentorPtr mentor = Counting(5);
    Watch(*mentor);
    EXPECT_FALSE(mentor->IsLoaded());
    EXPECT_FALSE(mentor->Get());
    mentor->Load();
    ASSERT_TRUE(mentor->IsLoaded());
    EXPECT_EQ(5, mentor->Get()->id);
    mentor->Load();
    EXPECT_EQ(1, m_loads) << "loading a loaded mentor does nothing";
    EXPECT_EQ((std::vector<std::string>{"load 5"}), m_events);
}

TEST_F(MentorTest, UnloadCallsTheOnUnloadSetBeforeReleasing) {
    TextureMentorPtr mentor = Counting(3);
    Watch(*mentor);
    mentor->Load();
    util::WeakPtr<Texture> texture(mentor->Get());
    mentor->Unload();
    EXPECT_EQ((std::vector<std::string>{"load 3", "unload 3"}), m_events);
    EXPECT_FALSE(mentor->IsLoaded());
    EXPECT_TRUE(texture.Expired());
    mentor->Unload();
    EXPECT_EQ(2u, m_events.size()) << "unloading an unloaded mentor does nothing";

    mentor->Load();
    EXPECT_EQ(2, m_loads);
    EXPECT_EQ("load 3", m_events.back());
}

TEST_F(MentorTest, FailedLoadTakesTheDefaultsObjectWithoutOnLoad) {
    TextureMentorPtr fallback = Counting(100);
    TextureMentor::SetDefault(fallback);
    TextureMentorPtr mentor = Counting(0);
    Watch(*mentor);

    mentor->Load();
    EXPECT_TRUE(fallback->IsLoaded()) << "the default is loaded on demand";
    ASSERT_TRUE(mentor->IsLoaded());
    EXPECT_EQ(fallback->Get(), mentor->Get());
    EXPECT_TRUE(m_events.empty());
    EXPECT_EQ(2, m_loads);

    // It is an ordinary loaded state: unloading tells the listeners.
    mentor->Unload();
    EXPECT_EQ((std::vector<std::string>{"unload 100"}), m_events);
    EXPECT_TRUE(fallback->IsLoaded());
}

TEST_F(MentorTest, ThrowingLoaderIsLoggedAsAnErrorAndFallsBack) {
    TextureMentor::SetDefault(Counting(100));
    TextureMentorPtr mentor(
        new TextureMentor([]() -> TexturePtr { throw std::runtime_error("file is gone"); }));
    test::LogCapture log;
    mentor->Load();
    EXPECT_TRUE(log.Contains("Caught exception: file is gone")) << log.Text();
    EXPECT_TRUE(log.Contains("!! ERROR: file is gone")) << log.Text();
    ASSERT_TRUE(mentor->IsLoaded());
    EXPECT_EQ(100, mentor->Get()->id);
}

TEST_F(MentorTest, ForeignThrowNamesTheResourceType) {
    TextureMentorPtr mentor(new TextureMentor([]() -> TexturePtr { throw 7; }));
    test::LogCapture log;
    mentor->Load();
    EXPECT_TRUE(log.Contains("Caught an unknown exception: ")) << log.Text();
    EXPECT_TRUE(log.Contains("!! ERROR: Unknown error while loading " + util::TypeName<Texture>()))
        << log.Text();
    EXPECT_FALSE(mentor->IsLoaded()) << "no default is registered";
}

TEST_F(MentorTest, DefaultWithFailingLoaderStaysEmpty) {
    TextureMentorPtr fallback = Counting(0);
    TextureMentor::SetDefault(fallback);
    EXPECT_TRUE(fallback->IsDefault());
    fallback->Load();
    EXPECT_FALSE(fallback->IsLoaded());
    EXPECT_EQ(1, m_loads);

    TextureMentorPtr mentor = Counting(0);
    mentor->Load();
    EXPECT_FALSE(mentor->IsLoaded());
    EXPECT_EQ(3, m_loads) << "the mentor's own loader, then the default's again";
}

TEST_F(MentorTest, ReloadAfterFallbackGetsTheRealResource) {
    TextureMentor::SetDefault(Counting(100));
    bool available = false;
    TextureMentorPtr mentor(
        new TextureMentor([&] { return available ? TexturePtr(new Texture(8)) : TexturePtr(); }));
    Watch(*mentor);
    mentor->Load();
    EXPECT_EQ(100, mentor->Get()->id);
    available = true;
    mentor->Unload();
    mentor->Load();
    EXPECT_EQ(8, mentor->Get()->id);
    EXPECT_EQ((std::vector<std::string>{"unload 100", "load 8"}), m_events);
}

TEST_F(MentorTest, CallbacksOfDeadListenersAreSkipped) {
    TextureMentorPtr mentor = Counting(2);
    SharedPtr<Listener> gone(new Listener);
    int calls = 0;
    mentor->OnLoad().Add(gone, [&] { ++calls; });
    gone.Reset();
    mentor->Load();
    EXPECT_EQ(0, calls);
}

TEST_F(MentorTest, TrackedAndUsableThroughTheAbstractInterface) {
    TextureMentorPtr mentor = Counting(4);
    util::AbstractMentor* abstract = nullptr;
    for (util::AbstractMentor* each : util::AbstractMentor::Snapshot()) {
        if (each == mentor.Get()) {
            abstract = each;
        }
    }
    ASSERT_NE(nullptr, abstract);
    EXPECT_TRUE(abstract->ResourceType() == typeid(Texture));
    abstract->Load();
    EXPECT_TRUE(mentor->IsLoaded());
    abstract->Unload();
    EXPECT_FALSE(mentor->IsLoaded());

    const util::AbstractMentor* raw = mentor.Get();
    mentor.Reset();
    const auto all = util::AbstractMentor::Snapshot();
    EXPECT_TRUE(std::find(all.begin(), all.end(), raw) == all.end());
}

TEST_F(MentorTest, MissingLoaderCountsAsAFailedLoad) {
    TextureMentor::SetDefault(Counting(100));
    TextureMentorPtr mentor(new TextureMentor());
    test::LogCapture log;
    mentor->Load();
    EXPECT_EQ(100, mentor->Get()->id);
    EXPECT_TRUE(log.Contains("!! ERROR: ")) << log.Text();
}

}  // namespace
