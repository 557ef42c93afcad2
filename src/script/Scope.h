#pragma once

#include <vector>

#include "script/Forward.h"
#include "script/Reflected.h"
#include "util/String.h"

namespace script {

// A reflected object that also holds infix functions, in order of declaration. Scopes
// nest through their owners: parsing asks the innermost one, which asks outwards.
class Scope : public Reflected {
public:
    explicit Scope(const util::String& name, ScopePtr owner = nullptr);
    ~Scope() override;

    void AddInfix(InfixPtr infix);
    const std::vector<InfixPtr>& GetInfixes() const { return m_infixes; }

    // The infix function that applies to a row holding these identifier names: every
    // keyword of its pattern must be among them. The lowest priority of all scopes wins;
    // at equal priority an inner scope hides an outer one. Null if none applies; two
    // equal candidates in one scope are a ParseException.
    InfixPtr GetInfix(const util::StringSet& words) const;

private:
    std::vector<InfixPtr> m_infixes;
};

}  // namespace script
