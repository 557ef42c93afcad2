#pragma once

#include <map>
#include <vector>

#include "script/Forward.h"
#include "script/Objects.h"
#include "script/Variable.h"

namespace script {

// A value with named members. Members ordered by name, byte for byte, so that saved
// output is sorted. Names are resolved by walking up the owners.
class ClassObject : public Object {
public:
    // The nodes come from the pool: every object carries one map, entities a dozen names.
    using VariableMap = std::map<util::String, VariablePtr, std::less<util::String>,
                                 util::PoolAllocator<std::pair<const util::String, VariablePtr>>>;

    ClassObject();
    ~ClassObject() override;

    // In this object only.
    bool HasVariable(const util::String& name) const;
    // In this object only; null if absent.
    VariablePtr GetVariable(const util::String& name) const;
    ObjectPtr GetValue(const util::String& name) const;
    // Here, then up the owners. Throws ScriptException "<name> not found in scope".
    VariablePtr LookupVariable(const util::String& name) const;
    ObjectPtr LookupValue(const util::String& name) const;

    // Asserts that the name is free, and makes this object the variable's owner.
    void AddVariable(VariablePtr var);
    // A variable that is not constant.
    void AddVariable(const util::String& name, ObjectPtr value);
    // The variable loses its owner if it is this object.
    void RemoveVariable(const util::String& name);

    // In map order.
    std::vector<VariablePtr> GetVariables() const;
    const VariableMap& GetVariableMap() const { return m_variables; }
    // The first variable in map order that holds this very object; null if none.
    VariablePtr FindVariable(ObjectPtr object) const;
    VariablePtr FindVariable(const Object* object) const;

    // The path of this object as an expression; null for an object without owner (the
    // root has no name in paths).
    IdentifierPtr GetIdentifier() const;

    // All members as statements with their paths: the body of a saved configuration.
    ExpressionPtr ToExpression() const override;
    util::String ToString() const override;
    // A class object has one place in the tree: it keeps a live owner it already has, and
    // refuses an owner that lies below itself, which would make name lookup endless. Any
    // object may always be cleared.
    void SetOwner(ClassObjectWeakPtr owner) override;

    // Counts every change of what a name can resolve to anywhere: variables added or
    // removed, owners changed, class objects made or gone. Lookups cached by identifiers
    // stay valid while it stands still, as it does from frame to frame.
    static unsigned long long BindingVersion() { return s_bindingVersion; }

private:
    static void BindingsChanged() { ++s_bindingVersion; }
    static inline unsigned long long s_bindingVersion = 0;

    VariableMap m_variables;
};

}  // namespace script
