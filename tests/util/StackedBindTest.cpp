#include "util/StackedBind.h"

#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "util/Exception.h"
#include "util/Pointee.h"

namespace {

std::vector<std::string> g_calls;

// Bindable resources are also counted objects.
class Program : public util::Pointee, public util::StackedBind<Program> {
public:
    explicit Program(std::string name) : m_name(std::move(name)) {}

protected:
    void DoBind() override { g_calls.push_back("+" + m_name); }
    void DoUnbind() override { g_calls.push_back("-" + m_name); }

private:
    std::string m_name;
};

// The stack is static: every test starts and ends with nothing bound.
class StackedBindTest : public testing::Test {
protected:
    StackedBindTest() { g_calls.clear(); }
    ~StackedBindTest() noexcept override {
        while (Program* top = Program::Current()) {
            top->Unbind();
        }
        Program::SetKeepPreviousBound(false);
    }

    Program m_a{"a"};
    Program m_b{"b"};
    Program m_c{"c"};
};

TEST_F(StackedBindTest, SingleBindAndUnbind) {
    m_a.Bind();
    EXPECT_EQ(&m_a, Program::Current());
    EXPECT_EQ(1u, Program::Depth());
    m_a.Unbind();
    EXPECT_EQ(nullptr, Program::Current());
    EXPECT_EQ((std::vector<std::string>{"+a", "-a"}), g_calls);
}

TEST_F(StackedBindTest, UnbindingRestoresThePreviousBinding) {
    m_a.Bind();
    m_b.Bind();
    m_c.Bind();
    EXPECT_EQ((std::vector<std::string>{"+a", "-a", "+b", "-b", "+c"}), g_calls);
    g_calls.clear();
    m_c.Unbind();
    EXPECT_EQ((std::vector<std::string>{"-c", "+b"}), g_calls);
    g_calls.clear();
    m_b.Unbind();
    m_a.Unbind();
    EXPECT_EQ((std::vector<std::string>{"-b", "+a", "-a"}), g_calls);
}

TEST_F(StackedBindTest, KeepingThePreviousBoundSkipsTheUnbinds) {
    Program::SetKeepPreviousBound(true);
    m_a.Bind();
    m_b.Bind();
    EXPECT_EQ((std::vector<std::string>{"+a", "+b"}), g_calls);
    g_calls.clear();
    m_b.Unbind();
    EXPECT_EQ((std::vector<std::string>{"+a"}), g_calls);
    g_calls.clear();
    m_a.Unbind();
    EXPECT_EQ((std::vector<std::string>{"-a"}), g_calls) << "the last one is always unbound";
}

TEST_F(StackedBindTest, TheSameObjectMayNest) {
    m_a.Bind();
    m_a.Bind();
    m_a.Unbind();
    EXPECT_EQ(&m_a, Program::Current());
    m_a.Unbind();
    EXPECT_EQ((std::vector<std::string>{"+a", "-a", "+a", "-a", "+a", "-a"}), g_calls);
}

TEST_F(StackedBindTest, UnbindOnAnEmptyStackIsADataAssertion) {
    test::LogCapture log;
    EXPECT_THROW(m_a.Unbind(), BadDataException);
    EXPECT_TRUE(log.Contains("Data assertion failed: \"!s_stack.empty()\"")) << log.Text();
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(StackedBindTest, UnbindOfAnotherThanTheTopIsADataAssertion) {
    m_a.Bind();
    m_b.Bind();
    g_calls.clear();
    test::LogCapture log;
    EXPECT_THROW(m_a.Unbind(), BadDataException);
    EXPECT_TRUE(log.Contains("Data assertion failed: \"s_stack.top() == this\"")) << log.Text();
    EXPECT_EQ(&m_b, Program::Current());
    EXPECT_EQ(2u, Program::Depth());
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(StackedBindTest, AtMostOneHundredNestedBinds) {
    std::deque<Program> programs;
    for (int i = 0; i < 101; ++i) {
        programs.emplace_back(std::to_string(i));
    }
    for (int i = 0; i < 100; ++i) {
        programs[i].Bind();
    }
    EXPECT_EQ(100u, Program::Depth());
    g_calls.clear();
    {
        test::LogCapture log;
        EXPECT_THROW(programs[100].Bind(), BadDataException);
        EXPECT_TRUE(log.Contains("Data assertion failed: \"s_stack.size() < 100\"")) << log.Text();
    }
    EXPECT_TRUE(g_calls.empty());
    EXPECT_EQ(&programs[99], Program::Current());
    for (int i = 99; i >= 0; --i) {
        programs[i].Unbind();
    }
    EXPECT_EQ(0u, Program::Depth());
}

TEST_F(StackedBindTest, WithoutAStackBindAndUnbindAreDirect) {
    class Plain : public util::AbstractBinder {
    protected:
        void DoBind() override { g_calls.push_back("bind"); }
        void DoUnbind() override { g_calls.push_back("unbind"); }
    } plain;
    util::AbstractBinder& binder = plain;
    binder.Bind();
    binder.Unbind();
    EXPECT_EQ((std::vector<std::string>{"bind", "unbind"}), g_calls);
}

}  // namespace
