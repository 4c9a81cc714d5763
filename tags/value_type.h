// Types of values: their names, their size, and where they fit.
#ifndef KVT_TAGS_VALUE_TYPE_H
#define KVT_TAGS_VALUE_TYPE_H

#include "tags/area.h"
#include "tags/word_order.h"

namespace kvt
{

/// How the bytes of a value are shown and entered.
enum class ValueType {
    Bool,   ///< 0 or 1
    U8,     ///< 0 to 255
    S8,     ///< -128 to 127
    U16,    ///< 0 to 65535
    S16,    ///< -32768 to 32767
    Hex,    ///< all bits of one element, as hexadecimal digits
    U32,    ///< 0 to 4294967295
    S32,    ///< -2147483648 to 2147483647
    F32,    ///< IEEE 754, 4 bytes
    U64,    ///< 0 to 18446744073709551615
    S64,    ///< -9223372036854775808 to 9223372036854775807
    F64,    ///< IEEE 754, 8 bytes
    Bcd16,  ///< four decimal digits, 0 to 9999
    Bcd32,  ///< eight decimal digits, 0 to 99999999
    String, ///< text of some bytes, the rest of them 0
    Bit     ///< one bit of an element, 0 or 1
};

/// What the bytes of a text stand for.
enum class TextEncoding {
    Latin1, ///< each byte is a character; every text can be read
    Utf8
};

/// A type with all that it takes to read and write a value of it.
struct ValueForm {
    ValueForm(ValueType ofType = ValueType::U16) : type(ofType) {}

    ValueType type;
    int number = 0;                               ///< string: bytes, 1 to 70; bit: 0 to 15
    TextEncoding encoding = TextEncoding::Latin1; ///< of a string
    bool bitIsWritten = false;                    ///< bit: by reading and writing its element
    WordOrder order = WordOrder::Abcd;            ///< a string has its words in order always
};

/// True when all of it is equal.
bool operator==(const ValueForm &a, const ValueForm &b);

/// Returns "bool", "u8" and so on; "string" and "bit" without their number.
QString typeName(ValueType type);

/// Returns the type as a list has it: "u8", "string:8", "string:8:utf8", "bit:3", "bit:3:rmw". The
/// order is not in it.
QString formText(const ValueForm &form);

/// Reads a type; `*form` keeps its order. Returns an empty text, or says what is wrong with it and
/// leaves `*form` alone.
QString parseForm(const QString &text, ValueForm *form);

/// Says why values of this form cannot lie in `area`; empty when they can.
QString formMisfit(const ValueForm &form, Area area);

/// Returns the bytes of a value, 1 to 70; those of its element for bool, hex and bit.
int byteCount(const ValueForm &form, Area area);

/// Returns the elements of `area` that a value takes: words in D, else bytes.
int elementCount(const ValueForm &form, Area area);

/// True for types whose values are numbers that can be scaled.
bool isNumeric(ValueType type);

/// True for f32 and f64.
constexpr bool isFloat(ValueType type)
{
    return type == ValueType::F32 || type == ValueType::F64;
}

} // namespace kvt

#endif
