#include "app/Language.h"

#include <exception>

#include "app/App.h"
#include "app/Group.h"
#include "app/entities/BoxEntity.h"
#include "app/entities/CircleEntity.h"
#include "app/entities/FixJointEntity.h"
#include "app/entities/HingeEntity.h"
#include "app/entities/PlaneEntity.h"
#include "app/entities/PolyEntity.h"
#include "app/entities/SpringEntity.h"
#include "logging/Log.h"
#include "script/Closure.h"
#include "script/Expressions.h"
#include "script/Parser.h"
#include "script/ValueConversions.h"
#include "script/Variable.h"
#include "util/FileSystem.h"
#include "util/StringUtil.h"

namespace app {
namespace {

const char* const kEnglish = "English";
const char* const kMissingHelp =
    "WARNING: Language file missing (see console and Logfile.txt for details)";

template <class Kind>
bool AllAre(const Group& group) {
    for (const EntityPtr& entity : group.GetEntities()) {
        if (!dynamic_cast<const Kind*>(entity.Get())) {
            return false;
        }
    }
    return true;
}

// The word for the most special class that every member belongs to.
const char* TypeWord(const Group& group) {
    if (AllAre<BoxEntity>(group)) {
        return "Box";
    }
    if (AllAre<CircleEntity>(group)) {
        return "Circle";
    }
    if (AllAre<PolyEntity>(group)) {
        return "Polygon";
    }
    if (AllAre<PlaneEntity>(group)) {
        return "Plane";
    }
    if (AllAre<GeomEntity>(group)) {
        return "Geom";
    }
    if (AllAre<HingeEntity>(group)) {
        return "Hinge";
    }
    if (AllAre<SpringEntity>(group)) {
        return "Spring";
    }
    if (AllAre<FixJointEntity>(group)) {
        return "FixJoint";
    }
    return "Entity";
}

}  // namespace

Language::Language() {
    Load(kEnglish);
    const util::String language = ApplicationLanguage();
    if (!language.empty() && language != kEnglish) {
        Load(language);
    }
}

Language::~Language() = default;

util::String Language::ApplicationLanguage() {
    // The application may not exist yet, and only main may make it.
    return App::IsAlive() ? App::Get().GetModel().language->Get() : util::String(kEnglish);
}

util::String Language::GetFilePath(const util::String& language) {
    return util::FileSystem::Get().GetWorkDirectory() + util::FileSystem::GetLanguageFolder() +
           language + ".cfg";
}

util::String Language::GetHelpFilePath(const util::String& language) {
    return util::FileSystem::Get().GetWorkDirectory() + util::FileSystem::GetLanguageFolder() +
           language + "_help.txt";
}

void Language::Load(const util::String& language) {
    Log(logging::Info, "Loading language " + language + "...");
    m_selectedName = language;
    try {
        // The files are UTF-8; the fonts draw Latin-1.
        const util::String text =
            util::Utf8ToLatin1(util::FileSystem::Get().ReadTextFile(GetFilePath(language)));
        m_selected.clear();
        script::Parser& parser = script::Parser::Get();
        const script::ClosurePtr closure(
            new script::Closure("Language_closure", parser.GetRootClosure()));
        const script::CodeBlockPtr tree = parser.Parse(text);
        if (!tree) {
            Log(logging::Warning, "Failed to load language " + language);
            return;
        }
        // Assignments to plain names become the closure's own variables, and a text may
        // use the texts defined before it.
        for (const script::ExpressionPtr& statement : tree->GetElements()) {
            statement->Evaluate(closure);
        }
        for (const script::VariablePtr& variable : closure->GetVariables()) {
            m_selected[variable->GetName()] =
                script::ObjectToValue<util::String>(variable->GetValue());
        }
        // English is the reference: it is the table every other language is held against.
        if (language == kEnglish) {
            m_english = m_selected;
        }
        for (const auto& [key, text] : m_english) {
            if (m_selected.find(key) == m_selected.end()) {
                Log(logging::Warning, "Missing " + language + " translation for " + key);
            }
        }
        for (const auto& [key, text] : m_selected) {
            if (m_english.find(key) == m_english.end()) {
                Log(logging::Warning, "Error in language file " + language + " had \"" + key +
                                          "\" which was not found in the english original");
            }
        }
    } catch (const std::exception& e) {
        Log(logging::Warning, "Error loading language " + util::String(e.what()));
    }
}

util::String Language::Translate(const util::String& key) const {
    auto found = m_selected.find(key);
    if (found != m_selected.end()) {
        return found->second;
    }
    found = m_english.find(key);
    if (found != m_english.end()) {
        return found->second;
    }
    Log(logging::Warning,
        util::String(kEnglish) + " and " + m_selectedName + " translation missing for " + key);
    return "[" + key + "]";
}

util::String Language::GetHelpText() const {
    const util::FileSystem& files = util::FileSystem::Get();
    const util::String path = GetHelpFilePath(ApplicationLanguage());
    try {
        return util::Utf8ToLatin1(files.ReadTextFile(path));
    } catch (const std::exception&) {
        Log(logging::Warning, "Missing help file: " + path);
    }
    const util::String english = GetHelpFilePath(kEnglish);
    try {
        return util::Utf8ToLatin1(files.ReadTextFile(english));
    } catch (const std::exception&) {
        Log(logging::Warning, "Missing help file: " + english);
    }
    return kMissingHelp;
}

util::String Language::GetTypeName(const Group& group) const {
    if (group.empty()) {
        return Translate("EmptyGroup");
    }
    const util::String key = util::String("Type_") + TypeWord(group);
    if (group.size() == 1) {
        return Translate(key);
    }
    return std::to_string(group.size()) + " " + Translate(key + "_plural");
}

}  // namespace app
