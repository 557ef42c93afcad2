#include "app/Undoer.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// Each action appends its steps to a shared journal, so that tests see what ran in which
// order; the value it stands for is a counter it moves up and back.
struct Journal {
    std::vector<std::string> entries;
    int value = 0;
};

class Step : public app::Action {
public:
    Step(Journal& journal, const char* label) : Action(label), m_journal(journal) {}
    void Do() override {
        ++m_journal.value;
        m_journal.entries.push_back(std::string("do ") + GetLabel());
    }
    void Undo() override {
        --m_journal.value;
        m_journal.entries.push_back(std::string("undo ") + GetLabel());
    }

private:
    Journal& m_journal;
};

class UndoerTest : public ::testing::Test {
protected:
    app::ActionPtr Make(const char* label) { return app::ActionPtr(new Step(m_journal, label)); }

    void SetUp() override {
        m_undoer.Clear();
        m_undoer.SetMaxUndo(app::Undoer::kDefaultMaxUndo);
    }
    void TearDown() override { m_undoer.Clear(); }

    app::Undoer& m_undoer = app::Undoer::Get();
    Journal m_journal;
};

TEST_F(UndoerTest, StepsUndoAndRedoInOrderAndANewStepClearsRedo) {
    int changes = 0;
    const util::SharedPtr<util::Pointee> owner(new util::Pointee());
    m_undoer.GetOnChange().Add(util::WeakPtr<util::Pointee>(owner), [&] { ++changes; });

    // Empty stacks: nothing happens, and nobody is told.
    m_undoer.Undo();
    m_undoer.Redo();
    EXPECT_EQ(0, changes);
    EXPECT_EQ(nullptr, m_undoer.GetUndoLabel());

    m_undoer.Do(Make("UndoBox"));
    m_undoer.Do(Make("UndoCircle"));
    m_undoer.AddDone(Make("UndoMove"));  // made already: Do is not called
    EXPECT_EQ(2, m_journal.value);
    EXPECT_STREQ("UndoMove", m_undoer.GetUndoLabel());

    m_undoer.Undo();
    m_undoer.Undo();
    EXPECT_EQ(0, m_journal.value);
    EXPECT_STREQ("UndoBox", m_undoer.GetUndoLabel());
    EXPECT_STREQ("UndoCircle", m_undoer.GetRedoLabel());
    m_undoer.Redo();  // the default Redo is Do
    EXPECT_EQ(1, m_journal.value);
    EXPECT_STREQ("UndoMove", m_undoer.GetRedoLabel());

    m_undoer.Do(Make("UndoPlane"));
    EXPECT_TRUE(m_undoer.GetRedoStack().empty());
    EXPECT_EQ(3u, m_undoer.GetUndoStack().size());
    EXPECT_EQ((std::vector<std::string>{"do UndoBox", "do UndoCircle", "undo UndoMove",
                                        "undo UndoCircle", "do UndoCircle", "do UndoPlane"}),
              m_journal.entries);
    EXPECT_EQ(7, changes);
}

TEST_F(UndoerTest, StacksKeepAtMostMaxUndoDroppingTheOldest) {
    EXPECT_EQ(25, m_undoer.GetMaxUndo());
    std::vector<util::WeakPtr<app::Action>> made;
    for (int i = 0; i < 26; ++i) {
        const app::ActionPtr action = Make("UndoBox");
        made.emplace_back(action);
        m_undoer.Do(action);
    }
    // The 26th step dropped the first, and nothing else holds it.
    EXPECT_EQ(25u, m_undoer.GetUndoStack().size());
    EXPECT_FALSE(made.front().Lock());
    EXPECT_TRUE(made[1].Lock());
    EXPECT_EQ(m_undoer.GetUndoStack().front().Get(), made[1].Lock().Get());

    // The redo stack obeys the same limit, and a lower limit acts at the next change.
    for (int i = 0; i < 25; ++i) {
        m_undoer.Undo();
    }
    EXPECT_EQ(25u, m_undoer.GetRedoStack().size());
    m_undoer.SetMaxUndo(3);
    EXPECT_EQ(25u, m_undoer.GetRedoStack().size());
    m_undoer.Redo();
    EXPECT_EQ(1u, m_undoer.GetUndoStack().size());
    EXPECT_EQ(24u, m_undoer.GetRedoStack().size());
    m_undoer.Do(Make("UndoCircle"));
    EXPECT_EQ(2u, m_undoer.GetUndoStack().size());
    EXPECT_TRUE(m_undoer.GetRedoStack().empty());
    for (int i = 0; i < 5; ++i) {
        m_undoer.Do(Make("UndoPen"));
    }
    EXPECT_EQ(3u, m_undoer.GetUndoStack().size());
}

}  // namespace
