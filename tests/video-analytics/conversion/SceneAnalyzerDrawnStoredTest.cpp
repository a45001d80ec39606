// A thousand scenes as they may be stored: what is read of each, what clients get, what is stored again.

#include "SceneAnalyzerDice.h"
#include "SceneAnalyzerScenes.h"

#include <SceneAnalyzerConverter.h>

#include <algorithm>

namespace
{

using namespace scenes;
using profile_conversion::ProfileParameters;
using profile_conversion::SceneAnalyzerConverter;
using scene::Calibration;
using scene::Config;

// A stored document with all the holes that one may have, and the scene that it stands for. Its lines take
// nothing from each other but for the sizes.
class StoredScene
{
  public:
    explicit StoredScene(Dice& dice) : m_dice(dice)
    {
        Blocks blocks;
        Number(blocks, "SceneType", &Config::SceneType);
        Number(blocks, "Background", &Config::Background);
        Number(blocks, "Tuning", &Config::Tuning);
        Number(blocks, "Sensitivity", &Config::Sensitivity);
        if (!m_dice.Once(8))
            blocks.push_back(CalibrationItem());
        if (!m_dice.Once(8))
            blocks.push_back(Sizes());
        if (!m_dice.Once(8))
            blocks.push_back(Zones());
        xml = "<tt:C xmlns:tt=\"http://www.onvif.org/ver10/schema\"><tt:AnalyticsModule "
              "Type=\"com.varlo.engine.sceneanalyzer\"><tt:Parameters>" +
              m_dice.Shuffled(blocks) + "</tt:Parameters></tt:AnalyticsModule></tt:C>";
    }

    std::string xml;
    Config expected;

  private:
    static std::string Simple(const std::string& name, const std::string& value)
    {
        return "<tt:SimpleItem Name=\"" + name + "\" Value=\"" + Escaped(value) + "\"/>";
    }
    static std::string Item(const std::string& name, const std::string& content)
    {
        return "<tt:ElementItem Name=\"" + name + "\">" + content + "</tt:ElementItem>";
    }

    void Number(Blocks& blocks, const std::string& name, void (Config::*set)(int))
    {
        if (m_dice.Once(6))
            return;
        const int number = m_dice.Number();
        (expected.*set)(number);
        blocks.push_back(Simple(name, std::to_string(number)));
    }

    static std::string Place(const Point& point)
    {
        return "<tt:Point y=\"" + std::to_string(point.Y()) + "\" x=\"" + std::to_string(point.X()) + "\"/>";
    }

    template <class Model, std::size_t N>
    void Shapes(Blocks& blocks, Model& model, const Lines<Model> (&lines)[N], bool takesBefore)
    {
        Line run;
        for (const Lines<Model>& line : lines)
        {
            Polygon points;
            std::string text;
            for (int count = m_dice.Once(3) ? m_dice.Below(4) : 2; count > 0; --count)
                text += Place(points.emplace_back(m_dice.Place()));
            if (points.size() >= 2) // a third point doesn't count
                std::copy_n(points.begin(), 2, run);
            if (points.size() >= 2 || takesBefore)
                (model.*line.set)(run);
            if (!points.empty())
                blocks.push_back(std::string("<tt:") + line.type + " Name=\"" + line.name + "\">" + text +
                                 "</tt:" + line.type + ">");
        }
    }

    std::string Height()
    {
        Calibration& calibration = expected.GetCalibration();
        std::string items;
        if (!m_dice.Once(4))
        {
            calibration.PhysicalHeight(m_dice.Number());
            items += Simple("Value", std::to_string(calibration.PhysicalHeight()));
        }
        if (!m_dice.Once(4))
        {
            calibration.PhysicalHeightUnit(m_dice.Words());
            items += Simple("Unit", calibration.PhysicalHeightUnit());
        }
        return Item("PhysicalHeight", items);
    }

    std::string CalibrationItem()
    {
        static constexpr Lines<Calibration> kShapes[] = {
            {"Rectangle", "ObjectAtNearLeft", &Calibration::ObjectAtNearLeft},
            {"Rectangle", "ObjectAtNearRight", &Calibration::ObjectAtNearRight},
            {"Rectangle", "ObjectAtDistance", &Calibration::ObjectAtDistance},
            {"Line", "NearWidth", &Calibration::NearWidth},
            {"Line", "FarWidth", &Calibration::FarWidth}};
        Blocks blocks;
        Shapes(blocks, expected.GetCalibration(), kShapes, false);
        if (!m_dice.Once(4))
        {
            const int calibrated = m_dice.Below(4) - 1;
            expected.GetCalibration().Calibrated(calibrated != 0);
            blocks.push_back(Simple("Calibrated", std::to_string(calibrated)));
        }
        expected.GetCalibration().PhysicalHeightUnit("");
        if (!m_dice.Once(4))
            blocks.push_back(Height());
        return Item("Calibration", m_dice.Shuffled(blocks));
    }

    std::string Sizes()
    {
        static constexpr Lines<Config> kSizes[] = {{"Rectangle", "MinSize", &Config::MinObjectSize},
                                                   {"Rectangle", "MaxSize", &Config::MaxObjectSize}};
        Blocks blocks;
        Shapes(blocks, expected, kSizes, true);
        return Item("ObjectSizeFilters", m_dice.Shuffled(blocks));
    }

    std::string Zones()
    {
        std::string zones;
        for (int count = m_dice.Below(6); count > 0; --count)
        {
            Polygon zone;
            std::string points;
            for (int vertices = m_dice.Below(7); vertices > 0; --vertices)
                points += Place(zone.emplace_back(m_dice.Place()));
            zones += "<tt:Polygon>" + points + "</tt:Polygon>";
            if (!zone.empty())
                expected.AddExcludeZone(zone);
        }
        return Item("ExcludeZones", zones);
    }

    Dice& m_dice;
};

class SceneAnalyzerDrawnStored : public SceneTest
{
};

TEST_F(SceneAnalyzerDrawnStored, StoredScenesAreReadSentAndStoredAgain)
{
    Dice dice(kSeed + 1);
    for (int i = 0; i < kScenes; ++i)
    {
        const StoredScene scene(dice);
        SCOPED_TRACE("scene " + std::to_string(i) + ": " + scene.xml);
        const std::string expected = Text(scene.expected);
        ASSERT_EQ(Text(FromEngine(scene.xml)), expected);
        ASSERT_EQ(Text(FromEngine(ToEngine(scene.expected))), expected);

        ProfileParameters params;
        SceneAnalyzerConverter converter;
        const std::string sent = converter.FromOnvifToVarlo(scene.xml, params);
        ASSERT_EQ(Text(FromClient(sent)), expected);
        const std::string stored = converter.FromVarloToOnvif(sent, params);
        ASSERT_EQ(Text(FromEngine(stored)), expected);
        ASSERT_EQ(converter.FromOnvifToVarlo(stored, params), sent);
    }
}

} // namespace
