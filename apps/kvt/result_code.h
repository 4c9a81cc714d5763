// The driver's result codes in words.
#ifndef KVT_APPS_KVT_RESULT_CODE_H
#define KVT_APPS_KVT_RESULT_CODE_H

#include <QJsonObject>
#include <QStringList>

namespace kvt
{

/// What a result code says.
struct CodeExplanation {
    int code = 0;
    bool isKnown = false;
    QString meaning;
    QString requester;  ///< who asked; empty where the code does not tell
    QStringList checks; ///< what to look at, the likeliest first; empty for success
};

/// Explains a code; one that the driver never gives is not known.
CodeExplanation explainCode(int code);

/// Lines of text.
QString codeText(const CodeExplanation &explanation);

QJsonObject codeToJson(const CodeExplanation &explanation);

} // namespace kvt

#endif
