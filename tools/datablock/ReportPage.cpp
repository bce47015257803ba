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

void appendData(std::string& page, const std::string& id, const std::string& json) {
    page.append(R"(<script type="application/json" id=")")
        .append(id)
        .append(R"(">)")
        .append(json)
        .append("</script>\n");
}

} // namespace

std::string reportPage(Travik::ReportDocuments& documents, const std::string& generator) {
    constexpr std::size_t around = 80; // of each document, its element
    std::size_t size = reportHtml.size() + reportStyle.size() + reportScript.size() + documents.head.size() + around;
    for (const std::string& block : documents.blocks)
        size += block.size() + around;
    const std::array<std::pair<std::string_view, std::string>, 5> parts{
        {{"policy", "default-src 'none'; script-src " + hashOf(reportScript) + "; style-src " + hashOf(reportStyle) +
                        "; img-src data:; base-uri 'none'; form-action 'none'"},
         {"generator", escaped(generator)},
         {"title", escaped(documents.title)},
         {"style", std::string(reportStyle)},
         {"script", std::string(reportScript)}}};
    std::string made;
    made.reserve(size);
    std::string_view rest = reportHtml;
    for (std::size_t open = rest.find("{{"); open != std::string_view::npos; open = rest.find("{{")) {
        made += rest.substr(0, open);
        const std::size_t close = rest.find("}}", open);
        const std::string_view name = rest.substr(open + 2, close - open - 2);
        if (name == "data") {
            appendData(made, "head-data", documents.head);
            for (std::size_t i = 0; i < documents.blocks.size(); ++i)
                appendData(made, "block-data-" + std::to_string(i), std::exchange(documents.blocks[i], {}));
        } else {
            made += std::ranges::find(parts, name, &std::pair<std::string_view, std::string>::first)->second;
        }
        rest.remove_prefix(close + 2);
    }
    return made.append(rest);
}

} // namespace Tool
