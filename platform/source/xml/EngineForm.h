#pragma once

// The names of the engine form that the layer's own code reads and writes, all in the namespace of
// Settings::OnvifPrefix().
namespace analytics::engineform
{

inline constexpr char kNamespace[] = "http://www.onvif.org/ver10/schema";
inline constexpr char kEngines[] = "AnalyticsEngineConfiguration"; // holds the engine modules
inline constexpr char kModule[] = "AnalyticsModule";
inline constexpr char kRule[] = "Rule";
inline constexpr char kParameters[] = "Parameters";
inline constexpr char kSimpleItem[] = "SimpleItem";
inline constexpr char kElementItem[] = "ElementItem";
inline constexpr char kName[] = "Name";
inline constexpr char kType[] = "Type"; // of a rule or a module: the identifier of its plug-in
inline constexpr char kValue[] = "Value";

// The mark of an active behavior, one element among the rules for each, also for one that holds no
// rule. It is no part of ONVIF and stands in a namespace of our own.
inline constexpr char kActiveNamespace[] = "urn:varlo-com:analytics:engine-document:1";
inline constexpr char kActiveRule[] = "ActiveRule";

} // namespace analytics::engineform
