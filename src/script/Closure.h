#pragma once

#include "script/Forward.h"
#include "script/Scope.h"

namespace script {

// The environment of evaluation. Its owner is the parent closure, held weakly, so names
// not found here are looked up outwards.
class Closure : public Scope {
public:
    Closure(const util::String& name, ClosurePtr parent);
    ~Closure() override;

    // The closure of one call of a function, named "[function closure: <code>]". The code
    // is printed only when the name is first asked for, not at every call.
    static ClosurePtr MakeCallClosure(ClosurePtr parent, ExpressionPtr functionCode);

protected:
    util::String MakeReflectedName() const override;

private:
    // Whatever prints as the function's code; kept until the name has been made.
    mutable ExpressionPtr m_functionCode;
};

}  // namespace script
