#include "script/Scope.h"

#include <limits>
#include <utility>

#include "script/Exceptions.h"
#include "script/Infix.h"
#include "util/Assert.h"
#include "util/Exception.h"

namespace script {
namespace {

bool Applies(const Infix& infix, const util::StringSet& words) {
    for (const util::String& word : infix.GetWords()) {
        if (!word.empty() && words.find(word) == words.end()) {
            return false;
        }
    }
    return true;
}

}  // namespace

Scope::Scope(const util::String& name, ScopePtr owner) : Reflected(name) {
    if (owner) {
        SetOwner(ClassObjectWeakPtr(owner));
    }
}

Scope::~Scope() = default;

void Scope::AddInfix(InfixPtr infix) {
    m_infixes.push_back(std::move(infix));
}

InfixPtr Scope::GetInfix(const util::StringSet& words) const {
    double best = std::numeric_limits<double>::infinity();
    std::vector<const InfixPtr*> matches;
    for (const InfixPtr& infix : m_infixes) {
        if (!Applies(*infix, words)) {
            continue;
        }
        const double priority = infix->GetPriority();
        if (priority > best) {
            continue;
        }
        if (priority < best) {
            matches.clear();
            best = priority;
        }
        matches.push_back(&infix);
    }
    if (const util::LockPtr<ClassObject> owner = GetOwner().Lock()) {
        const Scope* superscope = dynamic_cast<const Scope*>(owner.Get());
        CODE_ASSERT(superscope);
        InfixPtr outer = superscope->GetInfix(words);
        if (outer && outer->GetPriority() < best) {
            return outer;
        }
    }
    if (matches.empty()) {
        return nullptr;
    }
    if (matches.size() > 1) {
        VORRA_THROW(ParseException, "Multiple mathcing infix functions found");
    }
    return *matches[0];
}

}  // namespace script
