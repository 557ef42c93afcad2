#pragma once

#include "util/HashMap.h"
#include "util/Singleton.h"
#include "util/String.h"

namespace app {

class Group;

// Every text the user reads, by key. A language file is script text whose assignments
// define the texts; English is always loaded and shows through wherever the selected
// language lacks a text, and a key known to neither shows as "[key]".
class Language : public util::Pointee, public util::Singleton<Language> {
public:
    using Table = util::HashMap<util::String, util::String>;

    // Loads English, then the application's language if that is another.
    Language();
    ~Language() override;

    // Replaces the selected table with the texts of language/<language>.cfg. Never throws:
    // problems are logged, and what was read until then stays.
    void Load(const util::String& language);

    // The selected language's text, else the English one, else "[key]" (logged).
    util::String Translate(const util::String& key) const;

    // The whole help file of the application's language; English's, or a warning text,
    // where it is missing.
    util::String GetHelpText() const;
    // What the entities of a group are, as one word: "Box", "3 Boxes", "Empty group".
    util::String GetTypeName(const Group& group) const;

    const util::String& GetSelectedName() const { return m_selectedName; }
    const Table& GetSelectedTable() const { return m_selected; }
    const Table& GetEnglishTable() const { return m_english; }

    // The path of a language's file, and of its help file.
    static util::String GetFilePath(const util::String& language);
    static util::String GetHelpFilePath(const util::String& language);

private:
    // The language named by the application, English before the application exists.
    static util::String ApplicationLanguage();

    Table m_selected;
    Table m_english;
    util::String m_selectedName;
};

}  // namespace app
