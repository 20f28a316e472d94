#include "host/component/ClassTable.h"

#include "host/component/Registry.h"

namespace halvane::host {

const std::array<ClassInfo, 11> kClasses = {{
    {"clsToolbar", "Halvane.clsToolbar", "{F7EA5D5C-DD5A-41B2-B602-90BBA0066560}",
     "{64BA8C82-8E6A-47D1-B902-798EA72DAEEA}"},
    {"clsMenuTrevak", "Halvane.clsMenuTrevak", "{AA6C4733-E294-4BC1-86DB-020B83500BD0}",
     "{DDBB5A86-E91B-422A-AF3F-41D8A9ECA05F}"},
    {"clsCmdHalvaneIntro", "Halvane.clsCmdHalvaneIntro", "{B1C92728-DAA4-4126-825A-341FD2664464}",
     "{AC101195-0373-4473-A302-286EF7A8B4B6}"},
    {"clsCmdHalvaneResample", "Halvane.clsCmdHalvaneResample",
     "{9864DEAD-FE08-4443-9E4F-77F49FEEBA53}", "{78856B65-D7C6-434E-BEEA-A1167BB86A20}"},
    {"clsCmdHalvaneSSBPI", "Halvane.clsCmdHalvaneSSBPI", "{19520687-38CA-4951-BF36-0CEE26064C85}",
     "{DD95C03C-7C34-4E7E-B4CD-26CFAD8101D6}"},
    {"clsCmdHalvaneLSBPI", "Halvane.clsCmdHalvaneLSBPI", "{4485A139-EB0F-416C-96C6-411ECBD7E10B}",
     "{9C949F0A-0F1B-42F8-8201-132F6FD04310}"},
    {"clsCmdHalvaneStdz", "Halvane.clsCmdHalvaneStdz", "{147308F0-8310-43EA-9F86-48331DBF6922}",
     "{1E977698-70A9-433B-89E1-9839C3AC2AA3}"},
    {"clsCmdHalvaneClassDict", "Halvane.clsCmdHalvaneClassDict",
     "{D03F8DA0-4AB7-4641-84C1-5683720A6795}", "{AC62EE84-CA00-4F45-BF9E-B95833E57DF5}"},
    {"clsCmdHalvaneStep8", "Halvane.clsCmdHalvaneStep8", "{F8A3A9FE-2F55-47C4-9AFC-5BD7641ED161}",
     "{A11071F8-828C-4E89-9DB1-0735DC183154}"},
    {"clsCmdHalvaneRug", "Halvane.clsCmdHalvaneRug", "{80F928A2-9869-4A78-ABCD-05156013CB6A}",
     "{617E208F-18B2-4539-A282-2AA6952187B1}"},
    {"clsCmdHalvaneHelp", "Halvane.clsCmdHalvaneHelp", "{D4CA4B41-6B03-480B-A9BD-D3B7144E53DD}",
     "{33ACC62A-C4B6-44E8-B7C0-38F2E5B35235}"},
}};

const ClassInfo* ClassByProgId(const std::string& progId) {
    for (const ClassInfo& info : kClasses) {
        if (progId == info.progId) return &info;
    }
    return nullptr;
}

const ClassInfo* ClassByClsid(const std::string& clsid) {
    for (const ClassInfo& info : kClasses) {
        if (SameGuid(clsid, info.clsid)) return &info;
    }
    return nullptr;
}

}  // namespace halvane::host
