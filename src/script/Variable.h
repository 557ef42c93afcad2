#pragma once

#include "script/Forward.h"
#include "script/Objects.h"

namespace script {

// A named slot of a class object. Its owner is passed on to the value, which is how the
// tree of named objects is kept.
class Variable : public util::Pointee {
public:
    // Takes over the value's present owner as its own.
    Variable(const util::String& name, ObjectPtr value, bool constant);
    ~Variable() override;

    const util::String& GetName() const { return m_name; }
    const ObjectPtr& GetValue() const { return m_value; }
    // The old value loses its owner if it was this variable's; the new one gets it.
    virtual void SetValue(ObjectPtr value);
    // An attribute: a variable with a native value behind it. Asked per variable where
    // entities are written, so it is a plain virtual rather than a cast.
    virtual bool IsAttribute() const { return false; }
    // Constants cannot be assigned from a script.
    bool IsConstant() const { return m_constant; }

    const ClassObjectWeakPtr& GetOwner() const { return m_owner; }
    // Also gives the value this owner.
    void SetOwner(ClassObjectWeakPtr owner);

    // The statement that recreates the variable in a saved configuration: an assignment
    // to its path, the statements of a class object held in it, or null when the value
    // cannot be written down.
    ExpressionPtr ToExpression() const;

private:
    ClassObjectWeakPtr m_owner;
    util::String m_name;
    ObjectPtr m_value;
    bool m_constant;
};

}  // namespace script
