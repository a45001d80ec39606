#pragma once

#include <SceneAnalyzerConfig.h>

#include <Drawn.h>

#include <array>
#include <random>
#include <string>
#include <utility>
#include <vector>

// Chance for the tests that draw scenes. A drawn scene is made together with what is to be read from it,
// and the drawing knows nothing of the documents' readers: it only keeps the rules.
namespace scenes
{

using profile_conversion::Line;
using profile_conversion::Point;
using profile_conversion::Polygon;

inline const int kScenes = Drawn("DRAWN_SCENES", 1000);
inline constexpr unsigned int kSeed = 20240611;

using Blocks = std::vector<std::string>;
template <class Model>
using SetLine = void (Model::*)(const Line&);
template <class Model>
struct Lines
{
    const char* type;
    const char* name;
    SetLine<Model> set;
};

inline std::string Escaped(const std::string& text)
{
    std::string result;
    for (const char c : text)
        result += c == '<' ? "&lt;" : c == '&' ? "&amp;" : c == '"' ? "&quot;" : std::string(1, c);
    return result;
}

class Dice
{
  public:
    explicit Dice(unsigned int seed) : m_random(seed) {}

    int Below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned int>(limit)); }
    bool Once(int in) { return Below(in) == 0; }
    int Number() { return Once(20) ? static_cast<int>(m_random()) : Below(700) - 100; }
    Point Place() { return {Number(), Number()}; }

    std::string Words()
    {
        static const std::array<const char*, 8> words = {"cm",  "Gate",  " ",        "&",
                                                         "<b>", "\"q\"", "\xc3\xa9", "'"};
        std::string text;
        for (int count = Below(4); count > 0; --count)
            text += words[static_cast<std::size_t>(Below(static_cast<int>(words.size())))];
        return text;
    }

    // The blocks in any order: documents are read by name.
    std::string Shuffled(Blocks blocks)
    {
        std::string text;
        for (; !blocks.empty(); blocks.pop_back())
        {
            std::swap(blocks.back(),
                      blocks[static_cast<std::size_t>(Below(static_cast<int>(blocks.size())))]);
            text += blocks.back();
        }
        return text;
    }

  private:
    std::mt19937 m_random;
};

} // namespace scenes
