#pragma once

#include <memory>
#include <unordered_map>
#include <vector>

#include "script/Reflected.h"

namespace script {

// A combination of keys by number, and whether it is a switch. The binder knows no key
// names: the input system reads and prints them (KeyBinder::KeySource).
struct KeyCombination {
    std::vector<int> keys;  // sorted, each once
    bool toggle = false;

    bool operator==(const KeyCombination& other) const {
        return keys == other.keys && toggle == other.toggle;
    }
};

// The object "Keys": ties a combination of keys to a script function of no arguments,
// runs the function when the combination fires, and writes itself into the configuration
// as calls of Keys.bind. It is the only part of the language that touches the input
// system, through the source that system installs.
class KeyBinder : public Reflected {
public:
    // What the binder needs of the input system.
    class KeySource {
    public:
        virtual ~KeySource() = default;
        // Reads the text form: key names and the word "toggle". Throws BadDataException
        // for a name that names no key.
        virtual KeyCombination Read(const util::String& text) const = 0;
        virtual util::String Print(const KeyCombination& combination) const = 0;
        // Calls fire each time the combination fires, for as long as the binder lives.
        virtual void Listen(const KeyCombination& combination, KeyBinder& binder) = 0;
    };

    KeyBinder();
    ~KeyBinder() override;

    void SetKeySource(std::unique_ptr<KeySource> source);

    // Keys.bind(text, function) and Keys.unbind(text).
    void Bind(ObjectPtr buttons, ObjectPtr function);
    void Unbind(ObjectPtr buttons);
    // Runs what is bound to the combination. A failing function is logged, never thrown.
    void Fire(const KeyCombination& combination);

    size_t GetBindingCount() const { return m_bindings.size(); }
    ExpressionPtr ToExpression() const override;

private:
    struct CombinationHash {
        size_t operator()(const KeyCombination& combination) const;
    };

    KeyCombination ReadCombination(ObjectPtr buttons) const;
    const KeySource& Source() const;

    std::unique_ptr<KeySource> m_source;
    std::unordered_map<KeyCombination, ObjectPtr, CombinationHash> m_bindings;
    // Combinations whose callback is in place; they keep it after an unbind.
    std::vector<KeyCombination> m_listened;
    // The order in which combinations were first bound, for a stable configuration.
    std::vector<KeyCombination> m_order;
};

using KeyBinderPtr = util::SharedPtr<KeyBinder>;

}  // namespace script
