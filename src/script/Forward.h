#pragma once

#include <vector>

#include "util/Pointee.h"
#include "util/String.h"

// Declarations and pointer names of the script language, so that headers can name each
// other's classes without including them.
namespace script {

// Expressions.
class Expression;
template <class T>
class Literal;
class Identifier;
class Assignment;
class FunctionCall;
class InfixFunctionCall;
class FunctionDeclaration;
class InfixDeclaration;
class CodeBlock;
class Block;
class KeyBinder;
class ListDeclaration;
class Infix;

// Values.
class Object;
template <class T>
class Value;
class AbstractFunction;
class List;
class Function;
class AbstractIntrinsic;
class IntrinsicCmd;
class IntrinsicCmd1;
class IntrinsicCmd2;
class BadObject;
class Void;
class Unbound;
class ErrorObject;

// Named objects and environments.
class Variable;
class ClassObject;
class Reflected;
class Scope;
class Closure;

// Attributes.
class AbstractAttrib;
template <class T>
class TAttrib;
template <class T>
class Attrib;
template <class T>
class AttribGetSet;
template <class T>
class AttribRemotePoker;

using ExpressionPtr = util::SharedPtr<Expression>;
using IdentifierPtr = util::SharedPtr<Identifier>;
using CodeBlockPtr = util::SharedPtr<CodeBlock>;
using BlockPtr = util::SharedPtr<Block>;
using ListDeclarationPtr = util::SharedPtr<ListDeclaration>;
// Trees and values hold many short lists: their arrays come from the small-object pool.
using ExpressionList = std::vector<ExpressionPtr, util::PoolAllocator<ExpressionPtr>>;
using InfixPtr = util::SharedPtr<Infix>;

using ObjectPtr = util::SharedPtr<Object>;
using ObjectList = std::vector<ObjectPtr, util::PoolAllocator<ObjectPtr>>;
using AbstractFunctionPtr = util::SharedPtr<AbstractFunction>;
using FunctionPtr = util::SharedPtr<Function>;
using ListPtr = util::SharedPtr<List>;

using VariablePtr = util::SharedPtr<Variable>;
using ClassObjectPtr = util::SharedPtr<ClassObject>;
using ClassObjectWeakPtr = util::WeakPtr<ClassObject>;
using ReflectedPtr = util::SharedPtr<Reflected>;
using ScopePtr = util::SharedPtr<Scope>;
using ClosurePtr = util::SharedPtr<Closure>;
using ClosureWeakPtr = util::WeakPtr<Closure>;

using AbstractAttribPtr = util::SharedPtr<AbstractAttrib>;
template <class T>
using TAttribPtr = util::SharedPtr<TAttrib<T>>;
template <class T>
using AttribPtr = util::SharedPtr<Attrib<T>>;
template <class T>
using AttribGetSetPtr = util::SharedPtr<AttribGetSet<T>>;
template <class T>
using AttribRemotePokerPtr = util::SharedPtr<AttribRemotePoker<T>>;

}  // namespace script
