// The order of the bytes of a value that takes several.
#ifndef KVT_TAGS_WORD_ORDER_H
#define KVT_TAGS_WORD_ORDER_H

#include <QString>

#include <optional>

namespace kvt
{

/// How a value ABCD, A its most significant byte, lies at rising addresses. The order goes by
/// 16-bit words, also in area C, where a word is two neighbouring bytes. Values of 2 and 8 bytes
/// follow the same two rules: are the bytes of a word swapped, and does the last word come first.
enum class WordOrder {
    Abcd, ///< most significant word first, high byte first
    Badc, ///< most significant word first, bytes swapped
    Cdab, ///< least significant word first, high byte first
    Dcba  ///< least significant word first, bytes swapped
};

/// True when the bytes of each word are swapped.
constexpr bool swapsBytes(WordOrder order)
{
    return order == WordOrder::Badc || order == WordOrder::Dcba;
}

/// True when the least significant word comes first.
constexpr bool reversesWords(WordOrder order)
{
    return order == WordOrder::Cdab || order == WordOrder::Dcba;
}

/// Returns "abcd", "badc", "cdab" or "dcba".
QString wordOrderName(WordOrder order);

/// Reads the name of an order, in any case; none when it is anything else.
std::optional<WordOrder> parseWordOrder(const QString &text);

/// Says that a text is none.
QString wordOrderFault(const QString &text);

} // namespace kvt

#endif
