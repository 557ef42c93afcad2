#pragma once

#include <vector>

#include "script/Forward.h"

namespace script {

// An infix function: a pattern of keywords and argument places, and the expression that
// gives the function to call. The parser splits rows by these, lowest priority first.
class Infix : public util::Pointee {
public:
    // An empty word is an argument place.
    Infix(double priority, bool right, std::vector<util::String> words, ExpressionPtr body);
    ~Infix() override;

    double GetPriority() const { return m_priority; }
    // Only printed back: keyword search always runs from the left.
    bool IsRight() const { return m_right; }
    const std::vector<util::String>& GetWords() const { return m_words; }
    const ExpressionPtr& GetBody() const { return m_body; }
    // The number of empty words.
    size_t GetArgCount() const { return m_argCount; }

private:
    double m_priority;
    bool m_right;
    std::vector<util::String> m_words;
    ExpressionPtr m_body;
    size_t m_argCount = 0;
};

}  // namespace script
