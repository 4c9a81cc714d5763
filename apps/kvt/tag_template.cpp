#include "apps/kvt/tag_template.h"

namespace kvt
{

QString tagTemplate()
{
    return QStringLiteral(
        R"(# A tag list. Lines that begin with # are passed over. Columns may stand in any order and all but the
# first five may be left out. Semicolons or tabs may part the fields and numbers have a decimal comma
# then if you like. What is wrong or doubtful is told by: kvt tags check FILE
# A spreadsheet takes addresses for dates unless their column is formatted as text. Save as CSV UTF-8.
#
# address: D 5.2.1 is a word - X 1.1.0 a byte - C 7.0.1.4 a byte of a block. station: 0 to 255
# type: bool hex bit:N bit:N:rmw u8 s8 u16 s16 u32 s32 u64 s64 f32 f64 bcd16 bcd32 string:N string:N:utf8
# order: abcd badc cdab dcba. As a title order=cdab is that of all tags that name none
# torn: accept takes several words as they come. write_order: down writes the last word first
# scale and offset: value = raw * scale + offset. Or two points of a line: raw_low raw_high low high
# unit and decimals: how it is shown. min and max: what may be entered
# labels and bits: texts of numbers and of bits as in the last rows but one
# interval: 100ms or 5s or 1min. Empty: as often as the line allows
# deadband: 0.5 or 2% of the range
# lolo lo hi hihi: limits of alarms. alarm: a label or a bit or a value that is one instead
# hysteresis: how far back. on_delay and off_delay: how long. priority: low medium high critical
name,area,address,station,type,description,order,torn,write_order,scale,offset,raw_low,raw_high,low,high,unit,decimals,min,max,labels,bits,interval,deadband,alarm,lolo,lo,hi,hihi,hysteresis,on_delay,off_delay,priority,alarm_text
pump_speed,D,5.2.1,1,u16,as often as the line allows,,,,,,,,,,1/min,,0,3000,,,,,,,,,,,,,,
tank_level,D,5.3.1,1,s16,,,,,,,0,5000,0,5,m,3,,,,,1s,2%,,0.2,0.5,4.5,4.8,0.1,2s,5s,high,tank level
temperature,D,5.4.1,1,s16,,,,,0.1,-40,,,,,°C,1,,,,,5s,0.5,,,,80,,2,10s,,,too hot
energy,D,6.0.0,1,u32,two words,cdab,,,0.001,,,,,,MWh,3,,,,,1min,,,,,,,,,,,
setpoint,D,6.2.0,1,f32,,,,down,,,,,,,bar,2,0,10,,,1s,,,,,,,,,,,
pump_mode,X,1.1.0,1,u8,,,,,,,,,,,,,,,0=off;1=manual;2=automatic;9=fault,,500ms,,fault,,,,,,,,critical,pump has failed
messages,D,6.8.0,1,hex,,,,,,,,,,,,,,,,0=door open;3=dry run,500ms,,dry run,,,,,,1s,,high,pump runs dry
recipe,C,7.0.1.4,2,string:8,,,,,,,,,,,,,,,,,10s,,,,,,,,,,,
)");
}

} // namespace kvt
