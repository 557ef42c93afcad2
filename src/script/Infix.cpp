#include "script/Infix.h"

#include <utility>

#include "script/Expressions.h"

namespace script {

Infix::Infix(double priority, bool right, std::vector<util::String> words, ExpressionPtr body)
    : m_priority(priority), m_right(right), m_words(std::move(words)), m_body(std::move(body)) {
    for (const util::String& word : m_words) {
        if (word.empty()) {
            ++m_argCount;
        }
    }
}

Infix::~Infix() = default;

}  // namespace script
