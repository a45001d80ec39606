// Behavior documents of each family, made at random from a fixed seed: what a client reads back is what it
// sent, with the default for what it left out.

#include "Families.h"

#include "store/ProfileDocument.h"

#include <Drawn.h>

#include <ProfileDocConverter.h>

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <algorithm>
#include <ctime>
#include <map>
#include <random>

namespace conversiontest
{
namespace
{
constexpr unsigned kSeed = 20240229;

enum class Kind
{
    Number,
    Flag,
    Severity,
    One // a constant, whatever is sent
};

struct Child
{
    std::string name;
    int missing;
    Kind kind;
};

// What a family reads and writes, as its golden documents tell it: the case "missing-children" has everything
// at the default that stands for it when a client leaves it out.
struct Table
{
    std::vector<Child> children;
    // Above the zones: numbers in elements and attributes of the behavior, the sizes that are drawn as
    // lines, and whether it has exclude zones.
    std::vector<Child> head;
    std::vector<std::string> sizes;
    bool excludeZones;
    bool sizesInRules; // the engine has the sizes in its rules alone: without one, they are lost
};

Kind KindOf(const std::string& name)
{
    static const std::map<std::string, Kind> kKinds = {{"enable", Kind::Flag},
                                                       {"countReset", Kind::Flag},
                                                       {"@advanceMode", Kind::Flag},
                                                       {"alarmSeverity", Kind::Severity},
                                                       {"include", Kind::One}};
    const auto found = kKinds.find(name);
    return found == kKinds.end() ? Kind::Number : found->second;
}

// The elements among the children that hold a number, but for the advice on vertices.
std::vector<Child> Numbers(const pugi::xml_node& parent)
{
    std::vector<Child> numbers;
    for (const pugi::xml_node& child : parent.children())
        if (const std::string name = child.name(); child.text() && name != "minPoints" && name != "maxPoints")
            numbers.push_back({name, child.text().as_int(), KindOf(name)});
    return numbers;
}

Table TableOf(const Family& family)
{
    const std::string folder = TEST_DATA "/" + family.name + "/missing-children";
    pugi::xml_document document;
    EXPECT_TRUE(document.load_file((folder + "/returned.xml").c_str())) << folder;
    const pugi::xml_node behavior = document.child("behavior");
    const bool hasEngine = !ReadFile(folder + "/engine.xml").empty();
    Table table;
    for (const pugi::xml_node& roi : behavior.child("rois").children("roi"))
        if (!roi.child("vertices"))
            table.children = Numbers(roi);
    table.head = Numbers(behavior);
    if (hasEngine)
        table.head.push_back({"@advanceMode", 0, Kind::Flag});
    for (const pugi::xml_node& size : behavior.child("filters").child("objectsizes"))
        table.sizes.emplace_back(size.child_value("name"));
    table.excludeZones = hasEngine && behavior.child("excludeZones");
    table.sizesInRules = !table.sizes.empty() && !hasEngine;
    return table;
}

using Zone = std::vector<std::pair<int, int>>;

struct Roi
{
    std::string name;
    std::vector<int> values; // one per child
    Zone zone;
};

// What has to come back.
struct Expected
{
    bool active = false;
    std::vector<int> head;
    std::vector<Zone> sizes;
    std::vector<Zone> excludeZones;
    std::vector<Roi> rois;
};

class Generator
{
  public:
    explicit Generator(const Table& table) : m_table(table) {}

    std::string Document(const Family& family, Expected& expected)
    {
        const int flag = Number(0, 2);
        expected.active = flag != 0;
        std::string attributes = " id='" + (Number(0, 1) == 0 ? family.id : family.alias) + "' active='" +
                                 std::to_string(flag) + "'";
        std::string xml;
        for (const Child& field : m_table.head)
        {
            std::string& place = field.name[0] == '@' ? attributes : xml;
            place += Text(field, expected.head);
        }
        if (!m_table.sizes.empty())
            xml += "<filters><objectsizes>" + SizeTexts(expected) + "</objectsizes></filters>";
        if (m_table.excludeZones)
            xml += "<excludeZones>" + ExcludeZoneTexts(expected) + "</excludeZones>";
        std::string rois;
        for (int i = family.zones ? Number(0, 5) : 0; i > 0; --i)
            rois += RoiText(expected.rois.emplace_back());
        if (m_table.sizesInRules && expected.rois.empty())
            expected.sizes.assign(m_table.sizes.size(), Zone(2));
        return "<behavior" + attributes + ">" + xml + "<rois>" + rois + "</rois></behavior>";
    }

  private:
    int Number(int least, int most) { return std::uniform_int_distribution<int>(least, most)(m_random); }

    std::string RoiText(Roi& roi)
    {
        std::string xml;
        if (Number(0, 3) != 0)
            xml += "<name>" + (roi.name = "zone " + std::to_string(Number(0, 99))) + "</name>";
        for (const Child& child : m_table.children)
            xml += Text(child, roi.values);
        return "<roi>" + xml + ZoneText(roi.zone) + "</roi>";
    }

    std::string ZoneText(Zone& zone)
    {
        std::string vertices;
        for (int i = Number(0, 6); i > 0; --i)
        {
            const auto& [x, y] = zone.emplace_back(Number(-10000, 10000), Number(-10000, 10000));
            vertices += "<vertex><x>" + std::to_string(x) + "</x><y>" + std::to_string(y) + "</y></vertex>";
        }
        return "<vertices>" + vertices + "</vertices>";
    }

    // A size has two points. Those that are missing are the ones of the size before it.
    std::string SizeTexts(Expected& expected)
    {
        std::string xml;
        Zone line(2);
        for (const std::string& name : m_table.sizes)
        {
            Zone vertices;
            if (Number(0, 3) != 0)
                xml += "<objectsize><name>" + name + "</name>" + ZoneText(vertices) + "</objectsize>";
            std::copy_n(vertices.begin(), std::min<std::size_t>(vertices.size(), 2), line.begin());
            expected.sizes.push_back(line);
        }
        return xml;
    }

    // An empty zone is none to the engine, and doesn't come back from there.
    std::string ExcludeZoneTexts(Expected& expected)
    {
        std::string xml;
        for (int i = Number(0, 4); i > 0; --i)
        {
            Zone zone;
            xml += "<excludeZone><name>any</name>" + ZoneText(zone) + "</excludeZone>";
            if (!zone.empty())
                expected.excludeZones.push_back(zone);
        }
        return xml;
    }

    std::string Text(const Child& child, std::vector<int>& expected)
    {
        if (Number(0, 3) == 0)
        {
            expected.push_back(child.missing);
            return "";
        }
        const int value = Number(-3, 2000) / Number(1, 500);
        expected.push_back(Predicted(child.kind, value));
        const std::string& name = child.name;
        const std::string number = " " + std::to_string(value) + "\n";
        return name[0] == '@' ? " " + name.substr(1) + "='" + number + "'"
                              : "<" + name + ">" + number + "</" + name + ">";
    }

    static int Predicted(Kind kind, int value)
    {
        if (kind == Kind::Flag)
            return value == 0 ? 0 : 1;
        if (kind == Kind::One)
            return 1;
        return kind == Kind::Severity ? std::clamp(value, 0, 3) : value;
    }

    const Table& m_table;
    std::mt19937 m_random{kSeed};
};

using Nodes = std::vector<std::unique_ptr<analytics::DocumentNode>>;

Nodes Select(analytics::Document& doc, const std::string& query, analytics::DocumentNode* context)
{
    const std::vector<analytics::DocumentNode*> nodes = doc.SelectNodes(query, context);
    return {nodes.begin(), nodes.end()};
}

Zone ZoneOf(analytics::Document& doc, analytics::DocumentNode* node)
{
    Zone zone;
    for (const auto& vertex : Select(doc, "./vertices/vertex", node))
        zone.emplace_back(doc.GetSingleValue("./x", -99, vertex.get()),
                          doc.GetSingleValue("./y", -99, vertex.get()));
    return zone;
}

void Compare(const std::vector<Child>& table, const std::vector<int>& expected, analytics::Document& doc,
             analytics::DocumentNode* node)
{
    for (std::size_t i = 0; i < table.size(); ++i)
        EXPECT_EQ(doc.GetSingleValue("./" + table[i].name, -99, node), expected[i]) << table[i].name;
}

void CompareHead(const Table& table, const Expected& expected, analytics::Document& doc)
{
    const std::unique_ptr<analytics::DocumentNode> behavior(doc.SelectNode("behavior", nullptr));
    EXPECT_EQ(behavior->GetProperty("active", -99), expected.active ? 1 : 0);
    Compare(table.head, expected.head, doc, behavior.get());
    for (std::size_t i = 0; i < table.sizes.size(); ++i)
    {
        const Nodes sizes =
            Select(doc, "behavior/filters/objectsizes/objectsize[name='" + table.sizes[i] + "']", nullptr);
        ASSERT_EQ(sizes.size(), 1U);
        EXPECT_EQ(ZoneOf(doc, sizes[0].get()), expected.sizes[i]) << table.sizes[i];
    }
    const Nodes zones = Select(doc, "behavior/excludeZones/excludeZone", nullptr);
    ASSERT_EQ(zones.size(), expected.excludeZones.size());
    for (std::size_t i = 0; i < zones.size(); ++i)
    {
        EXPECT_EQ(doc.GetSingleValue("./name", zones[i].get()), "Exclude " + std::to_string(i + 1));
        EXPECT_EQ(ZoneOf(doc, zones[i].get()), expected.excludeZones[i]);
    }
}

void CompareRois(const Table& table, const std::vector<Roi>& expected, analytics::Document& doc)
{
    const Nodes rois = Select(doc, "behavior/rois/roi", nullptr);
    ASSERT_EQ(rois.size(), expected.size());
    for (std::size_t i = 0; i < rois.size(); ++i)
    {
        EXPECT_EQ(doc.GetSingleValue("./name", rois[i].get()), expected[i].name);
        Compare(table.children, expected[i].values, doc, rois[i].get());
        EXPECT_EQ(ZoneOf(doc, rois[i].get()), expected[i].zone);
    }
}

class RoundTrip : public testing::TestWithParam<Family>
{
  protected:
    // Through the engine document of the whole profile and back.
    std::string Return(const std::string& xml)
    {
        const Family family = GetParam();
        profile_conversion::ProfileParameters params;
        const auto converter = Converter(family.id);
        const std::string rule = converter->FromVarloToOnvif(xml, params);
        std::string engineId;
        std::string engine;
        std::vector<analytics::StoredConfiguration> stored = {
            {analytics::RulePlugin, family.id, rule, params.Active()}};
        if (converter->AdditionalComponent(engineId, engine))
            stored.push_back({analytics::EnginePlugin, engineId, engine});
        return Converter(family.id)->FromOnvifToVarlo(analytics::MergeProfile(stored), {});
    }

    Plugins platform;
};

TEST_P(RoundTrip, GivesBackWhatWasSent)
{
    const Family family = GetParam();
    const Table table = TableOf(family);
    ASSERT_FALSE(table.children.empty() && table.head.empty());
    Generator generator(table);
    const int documents = Drawn("DRAWN_DOCUMENTS", 200);
    for (int i = 0; i < documents && !HasFailure(); ++i)
    {
        Expected expected;
        const std::string sent = generator.Document(family, expected);
        const std::string returned = Return(sent);
        SCOPED_TRACE(sent + "\n" + returned);
        analytics::Document doc;
        ASSERT_EQ(doc.ParseString(returned),
                  !(family.emptyWhenIdle && expected.rois.empty() && !expected.active));
        if (returned.empty())
            continue;
        EXPECT_EQ(doc.GetSingleValue("behavior/@id", nullptr), family.alias);
        CompareHead(table, expected, doc);
        CompareRois(table, expected.rois, doc);
    }
}

class ZoneRoundTrip : public RoundTrip
{
};

TEST_P(ZoneRoundTrip, TakesLinearTime)
{
    const std::string vertices =
        "<vertices> <vertex><x>1</x><y>2</y></vertex> "
        "<vertex><x>3</x><y>4</y></vertex> <vertex><x>5</x><y>6</y></vertex> </vertices>";
    std::string excluded;
    std::string zones;
    for (int i = 0; i < 10000; ++i)
    {
        excluded += "<excludeZone>" + vertices + "</excludeZone>\n";
        zones += "<roi> <name>" + std::to_string(i) + "</name> <enable>1</enable> " + vertices + " </roi>\n";
    }
    const std::clock_t start = std::clock();
    const std::string returned = Return("<behavior id='" + std::string(GetParam().id) + "'><excludeZones>" +
                                        excluded + "</excludeZones><rois>" + zones + "</rois></behavior>");
    // Quadratic cost anywhere on the way takes minutes; linear cost a second, ten under sanitizers.
    EXPECT_LT(std::clock() - start, 90 * CLOCKS_PER_SEC);
    EXPECT_EQ(TextAt(returned, "behavior/rois/roi[10000]/name"), "9999");
}

INSTANTIATE_TEST_SUITE_P(All, RoundTrip, testing::ValuesIn(Families()),
                         [](const auto& row) { return std::string(row.param.name); });
INSTANTIATE_TEST_SUITE_P(All, ZoneRoundTrip, testing::ValuesIn(ZoneFamilies()),
                         [](const auto& row) { return std::string(row.param.name); });
} // namespace
} // namespace conversiontest
