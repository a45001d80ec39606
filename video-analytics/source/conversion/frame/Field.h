#pragma once

#include <frame/BehaviorConfig.h>

#include <variant>

namespace profile_conversion::frame
{

// A number, flag or severity of a rule or a model, under its name in a document: its getter and setter
// of one name. Flags read as true from any number but 0, severities as the nearest one.
template <class Object>
class Field
{
    template <class T>
    struct Accessors
    {
        T (Object::*get)() const;
        void (Object::*set)(T);
    };
    template <class T>
    using Getter = T (Object::*)() const;
    template <class T>
    using Setter = void (Object::*)(T);
    using Severity = analytics::AlarmSeverity;

  public:
    constexpr Field(const char* name, Getter<int> get, Setter<int> set)
        : m_name(name), m_accessors(Accessors<int>{get, set})
    {
    }
    constexpr Field(const char* name, Getter<bool> get, Setter<bool> set)
        : m_name(name), m_accessors(Accessors<bool>{get, set})
    {
    }
    constexpr Field(const char* name, Getter<Severity> get, Setter<Severity> set)
        : m_name(name), m_accessors(Accessors<Severity>{get, set})
    {
    }

    constexpr const char* Name() const { return m_name; }

    int Get(const Object& object) const
    {
        return std::visit([&](const auto& accessors) { return static_cast<int>((object.*accessors.get)()); },
                          m_accessors);
    }

    void Set(Object& object, int number) const
    {
        std::visit([&](const auto& accessors) { Assign(object, accessors, number); }, m_accessors);
    }

  private:
    static void Assign(Object& object, const Accessors<int>& accessors, int number)
    {
        (object.*accessors.set)(number);
    }
    static void Assign(Object& object, const Accessors<bool>& accessors, int number)
    {
        (object.*accessors.set)(number != 0);
    }
    static void Assign(Object& object, const Accessors<Severity>& accessors, int number)
    {
        (object.*accessors.set)(analytics::SeverityFromInt(number));
    }

    const char* m_name;
    std::variant<Accessors<int>, Accessors<bool>, Accessors<Severity>> m_accessors;
};

// A line of a model under its name in a document.
template <class Model>
struct LineField
{
    const char* name;
    const Line& (Model::*get)() const;
    void (Model::*set)(const Line&);
};

} // namespace profile_conversion::frame
