#pragma once

#include <functional>
#include <vector>

#include "script/Forward.h"
#include "script/Token.h"
#include "util/Singleton.h"

namespace script {

// The process-wide entry to the language: text to tree, tree to value against the root,
// the per-frame recalculation of attributes, configuration files and console completion.
//
// There are no built-in operators. A row of atoms is parsed flat, and only then does the
// scope say which infix function splits it; a row without one is a chain of calls.
class Parser : public util::Pointee, public util::Singleton<Parser> {
public:
    using ErrorHandler = std::function<void(const util::String&)>;

    Parser();
    ~Parser() override;

    // Null on failure, after the message went to the error handler.
    CodeBlockPtr Parse(const util::String& text);
    CodeBlockPtr Parse(const TokenList& tokens);

    // Evaluates against the root closure, then updates the attributes. A script error
    // goes to the error handler and gives an error object; it never escapes.
    ObjectPtr Execute(const ExpressionPtr& tree);
    ObjectPtr Execute(const util::String& text);
    ObjectPtr Execute(const TokenList& tokens);
    // The console's entry: the result as text, empty for nothing or a bad object.
    util::String ExecuteToString(const util::String& text);

    // Recalculates every attribute; once a frame and after every Execute.
    void Update();

    // Runs a configuration file. A missing or broken file is logged, never fatal.
    void LoadConfig(const util::String& path);
    // Writes the whole tree under the root as script text, as WriteChecked does.
    bool SaveConfig(const util::String& path);

    // Whether the text parses, with no trace: declarations it makes stay in a scope of
    // their own, and the reason it does not parse comes back in error instead of going to
    // the error handler.
    bool Parses(const util::String& text, util::String& error);
    // Writes script text meant to be read again (a scene, the configuration) so that a
    // file which loaded before still loads: the text is parsed back first. If it would not
    // parse, the file on disk stays as it was, the text goes beside it with ".broken"
    // appended, and the log names the statement, and in an entity's line the key, that
    // broke it. Otherwise the text replaces the file in one rename, never half written.
    // False, with the reason logged, when the file was not replaced.
    bool WriteChecked(const util::String& path, const util::String& text);

    // Completes the word at the end of the line in place. Returns the candidates when
    // there are several, else nothing.
    std::vector<util::String> Complete(util::String& line);

    // Adds to the root scope, for parsing, and to the root closure.
    void AddInfix(const InfixPtr& infix);

    const ClosurePtr& GetRootClosure() const { return m_rootClosure; }
    const ScopePtr& GetRootScope() const { return m_rootScope; }
    KeyBinder& GetKeyBinder() const { return *m_keyBinder; }

    void SetErrorHandler(ErrorHandler handler) { m_errorHandler = std::move(handler); }
    void ReportError(const util::String& message) const { m_errorHandler(message); }

    static void ParserAssert(bool condition, const util::String& message);
    // The common case of a fixed message: no string is built unless the check fails.
    static void ParserAssert(bool condition, const char* message) {
        if (!condition) {
            ParserAssert(false, util::String(message));
        }
    }

private:
    CodeBlockPtr ParseStatements(const ScopePtr& scope, TokenIt& it);
    template <class BlockType>
    util::SharedPtr<BlockType> ParseList(const ScopePtr& scope, TokenIt& it, const char* open,
                                         const char* close);
    ExpressionPtr ParseExpression(const ScopePtr& scope, TokenIt& it);
    ExpressionPtr ParseExpression(const ScopePtr& scope, ExpressionList::const_iterator begin,
                                  ExpressionList::const_iterator end);
    ExpressionPtr ParseCallChain(ExpressionList::const_iterator begin,
                                 ExpressionList::const_iterator end);
    ExpressionPtr ParseInfixCall(const ScopePtr& scope, const InfixPtr& infix,
                                 ExpressionList::const_iterator begin,
                                 ExpressionList::const_iterator end);
    ExpressionPtr ParseInfixDeclaration(const ScopePtr& scope, TokenIt& it);
    ExpressionPtr ParseFunction(const ScopePtr& scope, TokenIt& it);
    ExpressionPtr ParseAtom(TokenIt& it);
    bool IsFunctionAhead(TokenIt it) const;

    bool AtEnd(TokenIt it) const { return it == m_end; }
    bool IsText(TokenIt it, const char* text) const { return it != m_end && it->text == text; }
    bool IsCloser(TokenIt it) const;
    bool IsTerminator(TokenIt it) const;
    // Requires the token and steps over it.
    void Expect(TokenIt& it, const char* text, const char* message) const;

    ClosurePtr m_rootClosure;
    ScopePtr m_rootScope;
    // The object "Keys".
    util::SharedPtr<KeyBinder> m_keyBinder;
    ErrorHandler m_errorHandler;
    TokenIt m_end;
};

// Makes an object visible under the root of the language.
void AddToRoot(const ReflectedPtr& object);
// The object of that name under the root, or null when there is none or it holds no
// attributes.
ClassObject* FindInRoot(const util::String& name);

}  // namespace script
