#include "ReportPage.h"

#include "ReportAssets.h"

#include <QCryptographicHash>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace Tool {

namespace {

/// Text inside HTML.
std::string escaped(std::string_view text) {
    std::string made;
    for (const char character : text) {
        switch (character) {
        case '<':
            made += "&lt;";
            break;
        case '>':
            made += "&gt;";
            break;
        case '&':
            made += "&amp;";
            break;
        case '"':
            made += "&quot;";
            break;
        default:
            made += character;
        }
    }
    return made;
}

/// What a content security policy lets an inline element pass by.
std::string hashOf(std::string_view text) {
    const QByteArray bytes = QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size()));
    return "'sha256-" + QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toBase64().toStdString() + '\'';
}

std::string dataElement(const std::string& id, std::string_view json) {
    return "<script type=\"application/json\" id=\"" + id + "\">" + std::string(json) + "</script>\n";
}

} // namespace

std::string reportPage(const Travik::ReportDocuments& documents, const std::string& generator) {
    std::string data = dataElement("head-data", documents.head);
    for (std::size_t i = 0; i < documents.blocks.size(); ++i)
        data += dataElement("block-data-" + std::to_string(i), documents.blocks[i]);
    const std::array<std::pair<std::string_view, std::string>, 6> parts{
        {{"policy", "default-src 'none'; script-src " + hashOf(reportScript) + "; style-src " + hashOf(reportStyle) +
                        "; img-src data:; base-uri 'none'; form-action 'none'"},
         {"generator", escaped(generator)},
         {"title", escaped(documents.title)},
         {"style", std::string(reportStyle)},
         {"script", std::string(reportScript)},
         {"data", std::move(data)}}};
    std::string made;
    std::string_view rest = reportHtml;
    for (std::size_t open = rest.find("{{"); open != std::string_view::npos; open = rest.find("{{")) {
        made += rest.substr(0, open);
        const std::size_t close = rest.find("}}", open);
        const std::string_view name = rest.substr(open + 2, close - open - 2);
        made += std::ranges::find(parts, name, &std::pair<std::string_view, std::string>::first)->second;
        rest.remove_prefix(close + 2);
    }
    return made.append(rest);
}

} // namespace Tool
