#pragma once

namespace analytics
{

// As both document forms write it.
enum AlarmSeverity
{
    Minor = 0,
    Normal = 1,
    Major = 2,
    Critical = 3
};

// A number beyond the range is the nearest severity.
inline AlarmSeverity SeverityFromInt(int number)
{
    if (number < Minor)
        return Minor;
    return number > Critical ? Critical : static_cast<AlarmSeverity>(number);
}

} // namespace analytics
