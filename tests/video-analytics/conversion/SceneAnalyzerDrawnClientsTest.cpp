// A thousand scenes as clients may send them: what is read of each, what is stored, what comes back.

#include "SceneAnalyzerDice.h"
#include "SceneAnalyzerScenes.h"

#include <SceneAnalyzerConverter.h>

namespace
{

using namespace scenes;
using profile_conversion::ProfileParameters;
using profile_conversion::SceneAnalyzerConverter;
using scene::Calibration;
using scene::Config;

// A document of a client with all the holes that one may have, and the scene that it stands for.
class ClientScene
{
  public:
    explicit ClientScene(Dice& dice) : m_dice(dice)
    {
        Blocks blocks;
        Number(blocks, "sceneType", &Config::SceneType);
        Number(blocks, "background", &Config::Background);
        Number(blocks, "tuning", &Config::Tuning);
        Number(blocks, "sensitivity", &Config::Sensitivity);
        if (m_dice.Once(2))
            blocks.push_back("<cameraPreset>" + Escaped(m_dice.Words()) + "</cameraPreset>");
        if (!m_dice.Once(8))
            blocks.push_back(CalibrationBlock());
        if (!m_dice.Once(8))
            blocks.push_back(Filters());
        if (!m_dice.Once(8))
            blocks.push_back(Zones());
        const std::string name = m_dice.Words();
        expected.ProfileName(name);
        xml = "<analyticProfile name=\"" + Escaped(name) + "\">" + m_dice.Shuffled(blocks) +
              "</analyticProfile>";
    }

    std::string xml;
    Config expected;

  private:
    void Number(Blocks& blocks, const std::string& element, void (Config::*set)(int))
    {
        if (m_dice.Once(6))
            return;
        const int number = m_dice.Number();
        (expected.*set)(number);
        blocks.push_back("<" + element + ">" + std::to_string(number) + "</" + element + ">");
    }

    // A vertex that may lack coordinates; `point` takes those that it has.
    std::string Vertex(Point& point)
    {
        std::string text;
        if (!m_dice.Once(8))
        {
            point.SetX(m_dice.Number());
            text += "<x>" + std::to_string(point.X()) + "</x>";
        }
        if (!m_dice.Once(8))
        {
            point.SetY(m_dice.Number());
            text += "<y>" + std::to_string(point.Y()) + "</y>";
        }
        return "<vertex>" + text + "</vertex>";
    }

    // A run of lines: each stands for `run`, which only one with two vertices changes.
    template <class Model, std::size_t N>
    std::string Run(Model& model, const Lines<Model> (&lines)[N], Line& run)
    {
        Blocks blocks;
        for (const Lines<Model>& line : lines)
        {
            const int vertices = m_dice.Once(3) ? m_dice.Below(5) - 1 : 2; // -1: no line at all
            std::string text;
            for (int i = 0; i < vertices; ++i)
            {
                Point ignored;
                text += Vertex(vertices == 2 ? run[i] : ignored);
            }
            (model.*line.set)(run);
            if (vertices >= 0)
                blocks.push_back(std::string("<") + line.type + "><minValue>9</minValue><name>" + line.name +
                                 "</name><vertices>" + text + "</vertices></" + line.type + ">");
        }
        return m_dice.Shuffled(blocks);
    }

    std::string Height()
    {
        Calibration& calibration = expected.GetCalibration();
        const bool unit = !m_dice.Once(4);
        calibration.PhysicalHeight(m_dice.Number());
        calibration.PhysicalHeightUnit(unit ? m_dice.Words() : "");
        return "<physicalHeight" +
               (unit ? " unit=\"" + Escaped(calibration.PhysicalHeightUnit()) + "\"" : "") + ">" +
               std::to_string(calibration.PhysicalHeight()) + "</physicalHeight>";
    }

    std::string CalibrationBlock()
    {
        static constexpr Lines<Calibration> kObjects[] = {
            {"objectsize", "object1", &Calibration::ObjectAtNearLeft},
            {"objectsize", "object2", &Calibration::ObjectAtDistance},
            {"objectsize", "object3", &Calibration::ObjectAtNearRight}};
        static constexpr Lines<Calibration> kFovs[] = {{"fov", "nearWidth", &Calibration::NearWidth},
                                                       {"fov", "farWidth", &Calibration::FarWidth}};
        Calibration& calibration = expected.GetCalibration();
        const int calibrated = m_dice.Below(4) - 1;
        calibration.Calibrated(calibrated != 0);
        Line run;
        const std::string objects = Run(calibration, kObjects, run);
        const std::string height = m_dice.Once(4) ? "" : Height();
        const std::string fovs = Run(calibration, kFovs, run);
        return "<calibration calibrated=\"" + std::to_string(calibrated) + "\"><fovs>" + fovs +
               "</fovs><objectsizes>" + height + objects + "</objectsizes></calibration>";
    }

    std::string Filters()
    {
        static constexpr Lines<Config> kSizes[] = {{"objectsize", "minObj", &Config::MinObjectSize},
                                                   {"objectsize", "maxObj", &Config::MaxObjectSize}};
        Line run;
        return "<filters><objectsizes>" + Run(expected, kSizes, run) + "</objectsizes></filters>";
    }

    std::string Zones()
    {
        std::string zones;
        for (int count = m_dice.Below(6); count > 0; --count)
        {
            Polygon zone(static_cast<std::size_t>(m_dice.Below(7)));
            zones += "<excludeZone><name>any</name><vertices>";
            for (Point& point : zone)
                zones += Vertex(point);
            zones += "</vertices></excludeZone>";
            if (!zone.empty())
                expected.AddExcludeZone(zone);
        }
        return "<excludeZones>" + zones + "</excludeZones>";
    }

    Dice& m_dice;
};

class SceneAnalyzerDrawnClients : public SceneTest
{
};

TEST_F(SceneAnalyzerDrawnClients, ScenesOfClientsAreReadStoredAndGivenBack)
{
    Dice dice(kSeed);
    for (int i = 0; i < kScenes; ++i)
    {
        const ClientScene scene(dice);
        SCOPED_TRACE("scene " + std::to_string(i) + ": " + scene.xml);
        const std::string expected = Text(scene.expected);
        ASSERT_EQ(Text(FromClient(scene.xml)), expected);
        ASSERT_EQ(Text(FromClient(ToClient(scene.expected))), expected);

        ProfileParameters params;
        SceneAnalyzerConverter converter;
        const std::string stored = converter.FromVarloToOnvif(scene.xml, params);
        ASSERT_EQ(params.ProfileName(), scene.expected.ProfileName());
        ASSERT_EQ(params.CameraPreset(), "");
        params.CameraPreset(dice.Words());
        const std::string sent = converter.FromOnvifToVarlo(stored, params);
        ASSERT_EQ(Text(FromClient(sent)), expected);
        // What a client got and sends back is stored as it was.
        ASSERT_EQ(converter.FromVarloToOnvif(sent, params), stored);
    }
}

} // namespace
