#include "tools/moradmin/view/page.h"

#include "tools/moradmin/picture/forms.h"
#include "tools/moradmin/shown_text.h"

#include <ostream>
#include <sstream>
#include <string>

namespace mor::tool {

namespace {

/// JSON that ends no element of the page whatever texts it holds.
std::string embedded(const Json& json) {
    std::string text;
    for (const char c : json.dump(-1, ' ', false, Json::error_handler_t::replace))
        if (c == '<')
            text += "\\u003c";
        else
            text += c;
    return text;
}

std::string picture(Drawn& drawn) {
    drawn.canvas.background = -1;
    std::ostringstream out;
    writeSvg(out, drawn.painter.scene(), drawn.painter.fonts(), drawn.canvas);
    const std::string text = out.str();
    return text.substr(text.find("<svg"));
}

}  // namespace

void writePage(std::ostream& out, Session& session, Drawn& drawn) {
    const PageText parts = pageText();
    for (std::string_view rest = parts.html; !rest.empty();) {
        const std::size_t mark = rest.find('@');
        out << rest.substr(0, mark);
        if (mark == std::string_view::npos) return;
        const std::size_t end = rest.find('@', mark + 1);
        const std::string_view name = rest.substr(mark + 1, end - mark - 1);
        if (name == "TITLE")
            out << xmlText(session.file());
        else if (name == "STYLE")
            out << parts.style;
        else if (name == "SCRIPT")
            out << parts.script;
        else if (name == "SVG")
            out << picture(drawn);
        else if (name == "DATA")
            out << embedded(pageData(session, drawn));
        rest.remove_prefix(end + 1);
    }
}

}  // namespace mor::tool
