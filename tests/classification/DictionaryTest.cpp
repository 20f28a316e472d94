// Records and the dictionary file: the markup the writer builds, the round
// trip through a file, and how the reader treats files it did not write.

#include <filesystem>
#include <fstream>
#include <functional>

#include "classification/clsXMLPrjFile.h"
#include "platform/reporting/ErrorHandling.h"
#include "support/GridFiles.h"
#include "support/ScriptedDesktop.h"

namespace halvane::classification {
namespace {

using testing::TempDir;

clsClassificationRec Record(std::int16_t id, std::int16_t cls, const std::string& zone) {
    clsClassificationRec record;
    record.ID = id;
    record.Class = cls;
    record.Zone = zone;
    return record;
}

std::string Wrapped(const std::string& records, const std::string& root = "ClassDict") {
    return "<" + root + "><PrjName>T</PrjName><PRJDescription>D</PRJDescription><Classifications>" +
           records + "</Classifications></" + root + ">";
}

// A ClassRec with every element, in the writer's order unless told otherwise.
std::string RecordXml(const std::string& id, const std::string& cls, const std::string& zone,
                      const std::string& extra = "") {
    std::string xml = "<ClassRec" + (id.empty() ? "" : " ID=\"" + id + "\"") + ">";
    xml += extra;
    if (!cls.empty()) xml += "<Class>" + cls + "</Class>";
    xml += "<Zone>" + zone + "</Zone>";
    for (const auto& [name, field] : clsClassificationRec::kTextFields) {
        if (std::string(name) != "Zone") xml += "<" + std::string(name) + ">b</" + name + ">";
    }
    return xml + "</ClassRec>";
}

class DictionaryTest : public testing::ScriptedDesktop {
protected:
    void SetUp() override {
        ErrorHandling::ReleaseErrorWindow();
        ErrorHandling::m_bErrorTextBuilt = false;
    }

    // The procedures named by the reports from the first-th on, in order.
    std::vector<std::string> ReportedBy(std::size_t first) const {
        std::vector<std::string> names;
        const std::vector<std::string> reports = Reports();
        for (std::size_t i = first; i < reports.size(); ++i) {
            const std::string& text = reports[i];
            for (const char* name : {"GetNodeText", "LoadNode"}) {
                if (text.find(std::string(name) + " clsClassificationRec") != std::string::npos)
                    names.push_back(name);
            }
        }
        return names;
    }

    TempDir dir;
};

TEST_F(DictionaryTest, WriterPutsALineBreakAndOneTabWhereTheFormatSaysAndEmptyBoundsStay) {
    clsXMLPrjFile dictionary;
    dictionary.PrjName = "T";
    dictionary.PRJDescription = "D";
    auto record = std::make_shared<clsClassificationRec>(Record(2, 1, "Crests"));
    record->SSB_LowerBounds = "100";
    dictionary.Classifications->Add(record);

    const std::string I = "\r\n\t";
    std::string expected = "<ClassDict>" + I + "<PrjName>T</PrjName>" + I +
                           "<PRJDescription>D</PRJDescription>" + I + I + "<Classifications>" + I +
                           "<ClassRec ID=\"2\">" + I + "<Class>1</Class>" + I +
                           "<Zone>Crests</Zone>" + I + "<SSB_LowerBounds>100</SSB_LowerBounds>" + I;
    for (const char* empty : {"SSB_UpperBounds", "LSB_LowerBounds", "LSB_UpperBounds",
                              "Slope_LowerBounds", "Slope_UpperBounds", "Depth_LowerBounds",
                              "Depth_UpperBounds"}) {
        expected += "<" + std::string(empty) + "></" + empty + ">" + I;
    }
    expected += "</ClassRec>" + I + "</Classifications></ClassDict>";
    EXPECT_EQ(dictionary.XML(), expected);

    // An empty list holds exactly one whitespace node.
    EXPECT_EQ(clsClassificationRecs().XML(), "<Classifications>" + I + "</Classifications>");
}

TEST_F(DictionaryTest, EveryFieldSurvivesSaveAndLoadIncludingMarkupCharactersAndATitleWithXml) {
    clsXMLPrjFile written;
    written.PrjName = "Shelf <A> & \"B\" survey.xml";
    written.PRJDescription = "Zones on the shelf, ÅÄÖ";
    for (std::int16_t i = 0; i < 3; ++i) {
        auto record = std::make_shared<clsClassificationRec>(Record(i + 2, 10 - i, "Zone " + std::to_string(i)));
        for (const auto& [name, field] : clsClassificationRec::kTextFields) {
            if (std::string(name) != "Zone") (*record).*field = std::to_string(i) + name + " <&>";
        }
        written.Classifications->Add(record);
    }
    const std::string path = dir / "dict.xml";
    written.SaveFile(path);

    clsXMLPrjFile read;
    read.XML(path);
    EXPECT_EQ(read.XML(), written.XML());
    ASSERT_EQ(read.Classifications->Count(), 3);
    EXPECT_EQ(read.Classifications->Item(3)->Class, 8);
    EXPECT_EQ(read.Classifications->Item(1)->ID, 2);

    // The same text handed over as markup holds ".xml", so it is taken for a
    // path and nothing loads.
    clsXMLPrjFile fromText;
    fromText.XML(written.XML());
    EXPECT_EQ(fromText.PrjName, "");
    EXPECT_TRUE(Reports().empty());
}

TEST_F(DictionaryTest, ReaderFindsElementsByNameUnderAnyRootAndDropsWhatItDoesNotKnow) {
    const std::string reordered =
        "<ClassRec ID=\"5\"><Depth_UpperBounds>-10</Depth_UpperBounds><Zone>Flats</Zone>"
        "<SSB_LowerBounds>1</SSB_LowerBounds><Class>2</Class><SSB_UpperBounds/>"
        "<LSB_LowerBounds/><LSB_UpperBounds/><Slope_LowerBounds/><Slope_UpperBounds/>"
        "<Depth_LowerBounds/><Note>kept nowhere</Note></ClassRec>";
    clsXMLPrjFile dictionary;
    dictionary.XML("<Other><Classifications>" + reordered +
                   "</Classifications><PRJDescription>D</PRJDescription><PrjName>T</PrjName>"
                   "</Other>");
    ASSERT_EQ(dictionary.Classifications->Count(), 1);
    const auto& record = *dictionary.Classifications->Item(1);
    EXPECT_EQ(std::tie(record.ID, record.Class, record.Zone, record.SSB_LowerBounds,
                       record.Depth_UpperBounds),
              std::make_tuple(std::int16_t{5}, std::int16_t{2}, std::string("Flats"),
                              std::string("1"), std::string("-10")));
    EXPECT_EQ(dictionary.PrjName, "T");
    EXPECT_EQ(dictionary.XML().find("Note"), std::string::npos);
    EXPECT_EQ(dictionary.XML().find("<Other>"), std::string::npos);
    EXPECT_TRUE(Reports().empty());
}

TEST_F(DictionaryTest, BadRecordsAreReportedAndStillAddedHalfRead) {
    struct Case {
        std::string xml;
        std::vector<std::string> reportedBy;
        std::int16_t id, cls;
        std::string zone;
    };
    const std::vector<Case> cases = {
        // No ID: its lookup reports, then the empty text fails the number.
        {RecordXml("", "3", "Z"), {"GetNodeText", "LoadNode"}, 0, 0, ""},
        // Text for Class: ID is kept, the rest left at its defaults.
        {RecordXml("4", "three", "Z"), {"LoadNode"}, 4, 0, ""},
        // An ID beyond 16 bits overflows.
        {RecordXml("40000", "3", "Z"), {"LoadNode"}, 0, 0, ""},
        // A missing leaf is reported and left empty; the rest loads.
        {"<ClassRec ID=\"7\"><Class>3</Class></ClassRec>",
         std::vector<std::string>(9, "GetNodeText"), 7, 3, ""},
    };
    for (const Case& c : cases) {
        const std::size_t before = Reports().size();
        clsXMLPrjFile dictionary;
        dictionary.XML(Wrapped(c.xml + RecordXml("9", "1", "Next")));
        SCOPED_TRACE(c.xml);
        EXPECT_EQ(ReportedBy(before), c.reportedBy);
        ASSERT_EQ(dictionary.Classifications->Count(), 2);
        const auto& record = *dictionary.Classifications->Item(1);
        EXPECT_EQ(record.ID, c.id);
        EXPECT_EQ(record.Class, c.cls);
        EXPECT_EQ(record.Zone, c.zone);
        EXPECT_EQ(dictionary.Classifications->Item(2)->Zone, "Next");
    }
}

TEST_F(DictionaryTest, WhatDoesNotLoadLeavesTheObjectAsItWasWithoutAWord) {
    const std::string upperCase = dir / "DICT.XML";
    clsXMLPrjFile source;
    source.Classifications->Add(std::make_shared<clsClassificationRec>(Record(2, 1, "New")));
    source.SaveFile(upperCase);
    const std::string noClassifications = dir / "bare.xml";
    std::ofstream(noClassifications) << "<ClassDict><PrjName>Bare</PrjName></ClassDict>";
    const std::string emptyClassifications = dir / "empty.xml";
    std::ofstream(emptyClassifications) << Wrapped("");

    struct Case {
        std::string value;
        std::string title;  // after loading
        int records;
    };
    const std::vector<Case> cases = {
        {"", "Old", 1},                     // loadXML of nothing
        {upperCase, "Old", 1},              // no ".xml" in it: taken for markup
        {dir / "missing.xml", "Old", 1},    // no such file
        {"<ClassDict><PrjName>", "Old", 1}, // does not parse
        {noClassifications, "Bare", 1},     // the old records stay
        {emptyClassifications, "T", 0},     // the old records are replaced
    };
    for (const Case& c : cases) {
        clsXMLPrjFile dictionary;
        dictionary.PrjName = "Old";
        dictionary.Classifications->Add(std::make_shared<clsClassificationRec>(Record(2, 1, "Old")));
        dictionary.XML(c.value);
        EXPECT_EQ(dictionary.PrjName, c.title) << c.value;
        EXPECT_EQ(dictionary.Classifications->Count(), c.records) << c.value;
    }
    EXPECT_TRUE(ui.Events().empty());
}

TEST_F(DictionaryTest, ListFailuresAndAFailedSaveGoToTheCaller) {
    clsClassificationRecs records;
    records.Add(std::make_shared<clsClassificationRec>(Record(2, 1, "A")));
    records.Add(std::make_shared<clsClassificationRec>(Record(3, 2, "B")));
    records.Item(1, std::make_shared<clsClassificationRec>(Record(4, 3, "C")));
    records.Remove(2);
    EXPECT_EQ(records.Count(), 1);
    EXPECT_EQ(records.Item(1)->Zone, "C");
    // A position the list doesn't hold is out of range, for reading, writing
    // and removing alike, and leaves the list as it was.
    const auto numberOf = [](const std::function<void()>& call) {
        try {
            call();
        } catch (const runtime::Failure& failure) {
            return failure.number;
        }
        return 0;
    };
    const auto other = std::make_shared<clsClassificationRec>(Record(5, 4, "D"));
    for (std::int16_t bad : {0, -1, 2, 32767}) {
        SCOPED_TRACE(bad);
        EXPECT_EQ(numberOf([&] { records.Item(bad); }), runtime::kSubscriptOutOfRange);
        EXPECT_EQ(numberOf([&] { records.Item(bad, other); }), runtime::kSubscriptOutOfRange);
        EXPECT_EQ(numberOf([&] { records.Remove(bad); }), runtime::kSubscriptOutOfRange);
    }
    EXPECT_EQ(records.Count(), 1);
    EXPECT_EQ(records.Item(1)->Zone, "C");
    records.LoadNode(nullptr);
    EXPECT_EQ(records.Count(), 1);

    EXPECT_THROW(clsXMLPrjFile().SaveFile(dir / "no/such/folder/dict.xml"), runtime::Failure);
    EXPECT_TRUE(ui.Events().empty());
}

TEST(DefaultDictionary, StandsBesideTheProgramWithClassNumbersEqualToPositions) {
    clsXMLPrjFile dictionary;
    dictionary.XML(DefaultDictionaryPath());
    ASSERT_GE(dictionary.Classifications->Count(), 4);
    for (std::int16_t i = 1; i <= dictionary.Classifications->Count(); ++i) {
        EXPECT_EQ(dictionary.Classifications->Item(i)->Class, i);
        EXPECT_EQ(dictionary.Classifications->Item(i)->ID, i + 1);
        EXPECT_FALSE(dictionary.Classifications->Item(i)->Zone.empty());
    }
}

}  // namespace
}  // namespace halvane::classification
