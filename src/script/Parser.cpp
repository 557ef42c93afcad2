#include "script/Parser.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <limits>
#include <set>
#include <stdexcept>

#include "logging/Log.h"
#include "script/Attributes.h"
#include "script/ClassObject.h"
#include "script/Closure.h"
#include "script/Exceptions.h"
#include "script/Expressions.h"
#include "script/Infix.h"
#include "script/Intrinsics.h"
#include "script/KeyBinder.h"
#include "script/Objects.h"
#include "script/Scope.h"
#include "script/Tokenizer.h"
#include "script/Variable.h"
#include "util/FileSystem.h"
#include "util/StringUtil.h"
#include "util/Version.h"

namespace script {
namespace {

using ExpressionIt = ExpressionList::const_iterator;

// Strict number conversion of a whole token text, with an optional leading sign.
template <class T>
T ConvertNumber(const util::String& text, const char* shortTypeName) {
    const char* first = text.data();
    const char* last = first + text.size();
    if (first != last && *first == '+') {
        ++first;
    }
    T value{};
    const auto [end, error] = std::from_chars(first, last, value);
    if (error != std::errc() || end != last || first == last) {
        VORRA_THROW(std::runtime_error,
                    "Bad lexical cast: \"" + text + "\" is not a " + util::String(shortTypeName));
    }
    return value;
}

// "+inf" and "-inf" in any letter case, else the plain conversion.
double ConvertDouble(const util::String& text) {
    if (util::EqualsIgnoreCase(text, "+inf")) {
        return std::numeric_limits<double>::infinity();
    }
    if (util::EqualsIgnoreCase(text, "-inf")) {
        return -std::numeric_limits<double>::infinity();
    }
    return ConvertNumber<double>(text, "d");
}

bool ConvertBool(const util::String& text) {
    if (text == "0" || util::EqualsIgnoreCase(text, "false")) {
        return false;
    }
    if (text == "1" || util::EqualsIgnoreCase(text, "true")) {
        return true;
    }
    VORRA_THROW(std::runtime_error, "Bad lexical cast: \"" + text + "\" is not a bool");
}

bool IsNameStart(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) || c == '_';
}

const Identifier* AsIdentifier(const ExpressionPtr& expression) {
    return dynamic_cast<const Identifier*>(expression.Get());
}

// How deeply the expression parsers nest right now. Brackets, long infix rows and an
// infix function without keywords (which applies to its own argument) all recurse here;
// the limit keeps that, and the printing and freeing of the tree, off the native stack's
// end.
int s_parseDepth = 0;
constexpr int kMaxParseDepth = 500;

class ParseDepth {
public:
    ParseDepth() {
        if (s_parseDepth >= kMaxParseDepth) {
            VORRA_THROW(ParseException, "Expression nested too deeply");
        }
        ++s_parseDepth;
    }
    ~ParseDepth() { --s_parseDepth; }
    ParseDepth(const ParseDepth&) = delete;
    ParseDepth& operator=(const ParseDepth&) = delete;
};

}  // namespace

Parser::Parser()
    : m_rootClosure(new Closure("[ROOT]", nullptr)),
      m_rootScope(new Scope("ROOT_SCOPE")),
      m_keyBinder(new KeyBinder()),
      m_errorHandler([](const util::String& message) { Log(logging::Warning, message); }) {
    m_rootClosure->AddReflected(m_keyBinder);
    RegisterIntrinsics(*this);
}

Parser::~Parser() {
    // Functions stored under the root hold the root closure they were made in: without
    // this the tree would keep itself, and every published object, alive.
    std::vector<util::String> names;
    for (const auto& [name, variable] : m_rootClosure->GetVariableMap()) {
        names.push_back(name);
    }
    for (const util::String& name : names) {
        m_rootClosure->RemoveVariable(name);
    }
}

void Parser::ParserAssert(bool condition, const util::String& message) {
    if (!condition) {
        VORRA_THROW(ParseException, message);
    }
}

bool Parser::IsCloser(TokenIt it) const {
    return it != m_end && (it->text == ")" || it->text == "}" || it->text == "]");
}

bool Parser::IsTerminator(TokenIt it) const {
    return it == m_end || IsCloser(it) || it->text == ";" || it->text == ",";
}

void Parser::Expect(TokenIt& it, const char* text, const char* message) const {
    ParserAssert(IsText(it, text), message);
    ++it;
}

CodeBlockPtr Parser::Parse(const util::String& text) {
    TokenList tokens;
    try {
        tokens = Tokenizer::Tokenize(text);
    } catch (const std::exception& e) {
        logging::LogCaughtException(e, VORRA_LOCATION);
        ReportError("Tokenizer error: " + util::String(e.what()));
        return nullptr;
    }
    return Parse(tokens);
}

CodeBlockPtr Parser::Parse(const TokenList& tokens) {
    m_end = tokens.end();
    TokenIt it = tokens.begin();
    try {
        CodeBlockPtr block = ParseStatements(m_rootScope, it);
        if (it > m_end) {
            VORRA_THROW(ScriptException, "Parsed too many tokens (real bad stuff)");
        }
        if (it != m_end) {
            VORRA_THROW(ScriptException, "Unexpected token: " + it->text);
        }
        return block;
    } catch (const std::exception& e) {
        logging::LogCaughtException(e, VORRA_LOCATION);
        ReportError("Parse error: " + util::String(e.what()));
    } catch (...) {
        logging::LogCaughtUnknownException(VORRA_LOCATION);
        ReportError("Parse error: unknown error");
    }
    return nullptr;
}

CodeBlockPtr Parser::ParseStatements(const ScopePtr& scope, TokenIt& it) {
    CodeBlockPtr block(new CodeBlock());
    while (!AtEnd(it) && !IsCloser(it)) {
        if (ExpressionPtr expression = ParseExpression(scope, it)) {
            block->Add(expression);
        }
        if (AtEnd(it) || IsCloser(it)) {
            break;
        }
        Expect(it, ";", "Missing ;");
    }
    return block;
}

template <class BlockType>
util::SharedPtr<BlockType> Parser::ParseList(const ScopePtr& scope, TokenIt& it, const char* open,
                                             const char* close) {
    const util::String missingClose = util::String("Missing ") + close;
    Expect(it, open, (util::String("Missing ") + open).c_str());
    util::SharedPtr<BlockType> list(new BlockType());
    while (!IsText(it, close)) {
        // Unlike statements, an empty item is kept: "[,]" holds one null.
        list->Add(ParseExpression(scope, it));
        if (IsText(it, close)) {
            break;
        }
        ParserAssert(IsText(it, ","), missingClose);
        ++it;
    }
    Expect(it, close, missingClose.c_str());
    return list;
}

bool Parser::IsFunctionAhead(TokenIt it) const {
    // Counts parentheses from the opener; "=>" must follow the one that closes it.
    int depth = 0;
    for (; it != m_end; ++it) {
        if (it->text == "(") {
            ++depth;
        } else if (it->text == ")" && --depth == 0) {
            ++it;
            return IsText(it, "=>");
        }
    }
    return false;
}

ExpressionPtr Parser::ParseExpression(const ScopePtr& scope, TokenIt& it) {
    const ParseDepth depth;
    ParserAssert(!AtEnd(it), "Unexpected end of expression");
    if (it->text == "infix") {
        return ParseInfixDeclaration(scope, it);
    }
    ExpressionList row;
    while (!IsTerminator(it)) {
        const util::String& text = it->text;
        if (text == ".") {
            ParserAssert(!row.empty(), "General parse error");
            ++it;
            // A member name: a symbol that is a name, not an operator run such as "=".
            ParserAssert(!AtEnd(it) && it->kind == Token::Symbol && IsNameStart(it->text[0]),
                         "General parse error");
            ExpressionPtr owner = row.back();
            row.back() = ExpressionPtr(new Identifier(owner, it->text));
            ++it;
        } else if (text == "=") {
            if (row.size() != 1) {
                TokenIt next = it + 1;
                ParserAssert(false, "Bad placement of = (info: " +
                                        (AtEnd(next) ? util::String() : next->text) + ")");
            }
            const IdentifierPtr target = util::DynamicPointerCast<Identifier>(row.front());
            ParserAssert(static_cast<bool>(target), "You can only assign to an identifier");
            ++it;
            ExpressionPtr source = ParseExpression(scope, it);
            return ExpressionPtr(new Assignment(target, source));
        } else if (text == "(") {
            if (IsFunctionAhead(it)) {
                row.push_back(ParseFunction(scope, it));
            } else {
                row.push_back(ParseList<Block>(scope, it, "(", ")"));
            }
        } else if (text == "[") {
            row.push_back(ParseList<ListDeclaration>(scope, it, "[", "]"));
        } else if (text == "{") {
            row.push_back(ParseFunction(scope, it));
        } else {
            row.push_back(ParseAtom(it));
        }
    }
    return ParseExpression(scope, row.cbegin(), row.cend());
}

ExpressionPtr Parser::ParseAtom(TokenIt& it) {
    const Token& token = *it++;
    switch (token.kind) {
        case Token::Bool:
            return ExpressionPtr(new Literal<bool>(ConvertBool(token.text)));
        case Token::Int:
            return ExpressionPtr(new Literal<int>(ConvertNumber<int>(token.text, "i")));
        case Token::Float:
            return ExpressionPtr(new Literal<double>(ConvertDouble(token.text)));
        case Token::String:
            return ExpressionPtr(new Literal<util::String>(token.text));
        case Token::Symbol:
            return ExpressionPtr(new Identifier(nullptr, token.text));
    }
    VORRA_THROW(ParseException, "Unknown token \"" + token.text + "\"");
}

ExpressionPtr Parser::ParseExpression(const ScopePtr& scope, ExpressionIt begin, ExpressionIt end) {
    if (begin == end) {
        return nullptr;
    }
    CODE_ASSERT(begin < end);
    const ParseDepth depth;
    util::StringSet names;
    for (ExpressionIt it = begin; it != end; ++it) {
        if (const Identifier* identifier = AsIdentifier(*it)) {
            names.insert(identifier->GetName());
        }
    }
    const InfixPtr infix = scope->GetInfix(names);
    return infix ? ParseInfixCall(scope, infix, begin, end) : ParseCallChain(begin, end);
}

ExpressionPtr Parser::ParseCallChain(ExpressionIt begin, ExpressionIt end) {
    // "f x y" is (f(x))(y); an expression in parentheses is the argument block itself.
    ExpressionPtr call = *begin;
    for (ExpressionIt it = begin + 1; it != end; ++it) {
        CodeBlockPtr tail = util::DynamicPointerCast<Block>(*it);
        if (!tail) {
            tail = CodeBlockPtr(new Block());
            tail->Add(*it);
        }
        call = ExpressionPtr(new FunctionCall(call, tail));
    }
    return call;
}

ExpressionPtr Parser::ParseInfixCall(const ScopePtr& scope, const InfixPtr& infix,
                                     ExpressionIt begin, ExpressionIt end) {
    // Keywords are found by their first occurrence from the left, whatever the declared
    // direction: "a - b - c" is "a - (b - c)".
    const std::vector<util::String>& words = infix->GetWords();
    ExpressionList arguments;
    ExpressionIt cursor = begin;
    for (size_t i = 0; i < words.size(); ++i) {
        const util::String& word = words[i];
        if (!word.empty()) {
            const Identifier* identifier = cursor != end ? AsIdentifier(*cursor) : nullptr;
            ParserAssert(identifier && identifier->GetName() == word, "Missing keyword " + word);
            ++cursor;
            continue;
        }
        ExpressionIt stop = end;
        if (i + 1 < words.size()) {
            const util::String& next = words[i + 1];
            stop = std::find_if(cursor, end, [&](const ExpressionPtr& e) {
                const Identifier* identifier = AsIdentifier(e);
                return identifier && identifier->GetName() == next;
            });
            ParserAssert(stop != end, "Could not find infix function keyword " + next);
        }
        arguments.push_back(ParseExpression(scope, cursor, stop));
        cursor = stop;
    }
    ParserAssert(cursor == end, "Bad parse");
    return ExpressionPtr(new InfixFunctionCall(infix, arguments));
}

ExpressionPtr Parser::ParseInfixDeclaration(const ScopePtr& scope, TokenIt& it) {
    Expect(it, "infix", "Bad infix function");
    ParserAssert(!AtEnd(it), "Bad infix function");
    const double priority = ConvertDouble(it->text);
    ++it;
    ParserAssert(IsText(it, "left") || IsText(it, "right"), "Bad infix function");
    const bool right = it->text != "left";
    ++it;
    Expect(it, ":", "Missing :");
    std::vector<util::String> words;
    while (!AtEnd(it) && it->text != "=>") {
        words.push_back(it->text == "_" ? util::String() : it->text);
        ++it;
    }
    Expect(it, "=>", "Missing =>");
    ExpressionPtr body = ParseExpression(scope, it);
    InfixPtr infix(new Infix(priority, right, words, body));
    // At once, so that the statements after it already parse with it.
    scope->AddInfix(infix);
    return ExpressionPtr(new InfixDeclaration(infix));
}

ExpressionPtr Parser::ParseFunction(const ScopePtr& scope, TokenIt& it) {
    // Infix functions declared in the body land here and stay private to the function.
    ScopePtr functionScope(new Scope("[function scope]", scope));
    std::vector<util::String> names;
    if (IsText(it, "(")) {
        ++it;
        while (m_end - it >= 2 && it->text != ")") {
            ParserAssert(it->kind == Token::Symbol, "Argument list must consist of Identifiers");
            functionScope->AddVariable(VariablePtr(new Variable(it->text, new Unbound(), false)));
            names.push_back(it->text);
            ++it;
            if (!IsText(it, ",")) {
                break;
            }
            ++it;
        }
        Expect(it, ")", "Missing )");
        Expect(it, "=>", "Missing =>");
    }
    Expect(it, "{", "Missing {");
    CodeBlockPtr body = ParseStatements(functionScope, it);
    Expect(it, "}", "Missing }");
    return ExpressionPtr(new FunctionDeclaration(names, body));
}

ObjectPtr Parser::Execute(const ExpressionPtr& tree) {
    ObjectPtr result;
    try {
        result = tree->Evaluate(m_rootClosure);
    } catch (const std::exception& e) {
        logging::LogCaughtException(e, VORRA_LOCATION);
        ReportError("Tree evaluation error: " + util::String(e.what()));
        result = new ErrorObject();
    } catch (...) {
        logging::LogCaughtUnknownException(VORRA_LOCATION);
        ReportError("Parser threw unknown excpetion.");
        result = new ErrorObject();
    }
    Update();
    return result;
}

ObjectPtr Parser::Execute(const util::String& text) {
    return Execute(ExpressionPtr(Parse(text)));
}

ObjectPtr Parser::Execute(const TokenList& tokens) {
    return Execute(ExpressionPtr(Parse(tokens)));
}

util::String Parser::ExecuteToString(const util::String& text) {
    const ObjectPtr result = Execute(text);
    if (!result || dynamic_cast<const BadObject*>(result.Get())) {
        return util::String();
    }
    return result->ToString();
}

void Parser::Update() {
    AbstractAttrib::CalcAll();
}

void Parser::AddInfix(const InfixPtr& infix) {
    m_rootScope->AddInfix(infix);
    m_rootClosure->AddInfix(infix);
}

void Parser::LoadConfig(const util::String& path) {
    Log(logging::Info, "Parsing " + path + "...");
    try {
        Update();
        const util::String text = util::FileSystem::Get().ReadTextFile(path);
        Execute(text);
        Update();
    } catch (const std::exception& e) {
        logging::LogCaughtException(e, VORRA_LOCATION);
        Log(logging::Error, "Failed loading config file: " + util::String(e.what()));
    }
}

bool Parser::SaveConfig(const util::String& path) {
    const ExpressionPtr tree = m_rootClosure->ToExpression();
    const util::String code = tree ? tree->ToCode() : util::String();
    if (code.empty()) {
        return false;
    }
    return WriteChecked(path, "// Generated by " + util::GetVersionString() + "\n\n" + code);
}

bool Parser::Parses(const util::String& text, util::String& error) {
    try {
        const TokenList tokens = Tokenizer::Tokenize(text);
        m_end = tokens.end();
        TokenIt it = tokens.begin();
        const ScopePtr scope(new Scope("[check]", m_rootScope));
        ParseStatements(scope, it);
        if (it != m_end) {
            VORRA_THROW(ScriptException, "Unexpected token: " + it->text);
        }
        return true;
    } catch (const std::exception& e) {
        error = e.what();
    } catch (...) {
        error = "unknown error";
    }
    return false;
}

namespace {

// Where a printed text stops reading back: the first line that does not parse by itself,
// and in a creator's line such as Scene.addBox({size = [1.0, 1.0]; ...}) the first key
// whose assignment does not. Printed statements stand one to a line.
util::String FindBrokenPlace(Parser& parser, const util::String& text) {
    util::String error;
    size_t start = 0;
    for (int line = 1; start < text.size(); ++line) {
        size_t end = text.find('\n', start);
        if (end == util::String::npos) {
            end = text.size();
        }
        util::String statement = text.substr(start, end - start);
        start = end + 1;
        while (!statement.empty() && (statement.back() == ';' || statement.back() == '\r')) {
            statement.pop_back();
        }
        if (parser.Parses(statement, error)) {
            continue;
        }
        const util::String where = "line " + std::to_string(line);
        const size_t open = statement.find("({");
        if (open != util::String::npos) {
            size_t key = open + 2;
            while (key < statement.size()) {
                size_t next = statement.find("; ", key);
                if (next == util::String::npos) {
                    next = statement.size();
                }
                const util::String assignment = statement.substr(key, next - key);
                if (!parser.Parses(assignment, error)) {
                    return where + ", key " + assignment.substr(0, assignment.find(" = "));
                }
                key = next + 2;
            }
        }
        const size_t equals = statement.find(" = ");
        if (equals != util::String::npos && open == util::String::npos) {
            return where + ", " + statement.substr(0, equals);
        }
        return where;
    }
    return "an unknown place";
}

}  // namespace

bool Parser::WriteChecked(const util::String& path, const util::String& text) {
    const util::FileSystem& files = util::FileSystem::Get();
    util::String error;
    if (!Parses(text, error)) {
        const util::String broken = path + ".broken";
        const bool kept = files.WriteTextFile(broken, text);
        Log(logging::Error, "Couldn't save " + path + ": the text would not load again (" +
                                FindBrokenPlace(*this, text) + ": " + error +
                                "). The file stays as it was" +
                                (kept ? "; the text is in " + broken : util::String()));
        return false;
    }
    return files.ReplaceTextFile(path, text);
}

namespace {

bool IsWordCharacter(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '.' || c == '_';
}

// The object a path part leads into: a class object, or a function of no arguments whose
// body is one identifier naming a class object (how a command can stand for an object).
ClassObjectPtr CompletionTarget(const ObjectPtr& value) {
    if (ClassObjectPtr object = util::DynamicPointerCast<ClassObject>(value)) {
        return object;
    }
    const Function* function = dynamic_cast<const Function*>(value.Get());
    if (!function || function->GetArgCount() != 0 || !function->GetBody() ||
        function->GetBody()->GetElements().size() != 1) {
        return nullptr;
    }
    const Identifier* identifier =
        dynamic_cast<const Identifier*>(function->GetBody()->GetElements().front().Get());
    if (!identifier || !function->GetClosure()) {
        return nullptr;
    }
    try {
        return util::DynamicPointerCast<ClassObject>(identifier->GetValue(function->GetClosure()));
    } catch (const std::exception&) {
        return nullptr;
    }
}

// Adapts the case of the typed part to the candidates, then extends it by what they all
// share, ignoring case.
util::String CommonCompletion(const util::String& typed, const std::set<util::String>& candidates) {
    util::String result = typed;
    for (size_t i = 0; i < result.size(); ++i) {
        bool allLower = true;
        bool allUpper = true;
        for (const util::String& candidate : candidates) {
            const unsigned char c = static_cast<unsigned char>(candidate[i]);
            allLower = allLower && !std::isupper(c);
            allUpper = allUpper && std::isupper(c);
        }
        if (allLower) {
            result[i] = static_cast<char>(std::tolower(static_cast<unsigned char>(result[i])));
        } else if (allUpper) {
            result[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(result[i])));
        }
    }
    const util::String& first = *candidates.begin();
    for (size_t i = result.size(); i < first.size(); ++i) {
        const int c = std::tolower(static_cast<unsigned char>(first[i]));
        for (const util::String& candidate : candidates) {
            if (i >= candidate.size() ||
                std::tolower(static_cast<unsigned char>(candidate[i])) != c) {
                return result;
            }
        }
        result += first[i];
    }
    return result;
}

}  // namespace

std::vector<util::String> Parser::Complete(util::String& line) {
    size_t start = line.size();
    while (start > 0 && IsWordCharacter(line[start - 1])) {
        --start;
    }
    std::vector<util::String> parts = util::Split(line.substr(start), '.');

    ClassObjectPtr current = m_rootClosure;
    for (size_t i = 0; i + 1 < parts.size(); ++i) {
        ClassObjectPtr next;
        for (const VariablePtr& variable : current->GetVariables()) {
            if (!util::EqualsIgnoreCase(variable->GetName(), parts[i])) {
                continue;
            }
            if ((next = CompletionTarget(variable->GetValue()))) {
                parts[i] = variable->GetName();
                break;
            }
        }
        if (!next) {
            return {};
        }
        current = next;
    }

    util::String& last = parts.back();
    std::set<util::String> candidates;
    for (const VariablePtr& variable : current->GetVariables()) {
        if (!util::StartsWithIgnoreCase(variable->GetName(), last)) {
            continue;
        }
        const ClassObject* object = dynamic_cast<const ClassObject*>(variable->GetValue().Get());
        const bool hasMembers = object && !object->GetVariables().empty();
        candidates.insert(variable->GetName() + (hasMembers ? "." : ""));
    }
    if (candidates.empty()) {
        return {};
    }
    std::vector<util::String> result;
    if (candidates.size() == 1) {
        last = *candidates.begin();
    } else {
        last = CommonCompletion(last, candidates);
        result.assign(candidates.begin(), candidates.end());
    }
    line = line.substr(0, start) + util::Join(parts, ".");
    return result;
}

void AddToRoot(const ReflectedPtr& object) {
    Parser::Get().GetRootClosure()->AddReflected(object);
}

ClassObject* FindInRoot(const util::String& name) {
    const ObjectPtr value = Parser::Get().GetRootClosure()->GetValue(name);
    return dynamic_cast<ClassObject*>(value.Get());
}

}  // namespace script
