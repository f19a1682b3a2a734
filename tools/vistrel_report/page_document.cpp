#include "tools/vistrel_report/page_document.h"

#include "tools/vistrel_report/style_sheet.h"

namespace {

void WriteHead(Markup& page, const std::string& title) {
    const Markup::Element head = page.Open("head");
    page.Void("meta", {{"charset", "utf-8"}});
    page.Void("meta", {{"http-equiv", "Content-Security-Policy"},
                       {"content", "default-src 'none'; style-src 'sha256-" VISTREL_REPORT_STYLE_HASH
                                   "'; base-uri 'none'; form-action 'none'"}});
    page.Void("meta", {{"name", "viewport"}, {"content", "width=device-width, initial-scale=1"}});
    page.Void("meta", {{"name", "color-scheme"}, {"content", "light dark"}});
    page.Void("meta", {{"name", "referrer"}, {"content", "no-referrer"}});
    page.TextElement("title", title);
    const Markup::Element style = page.Open("style");
    page.Verbatim(VISTREL_REPORT_STYLE);
}

}  // namespace

std::string PageDocument(const std::string& title, const std::function<void(Markup&)>& write) {
    Markup page;
    page.Verbatim("<!DOCTYPE html>\n");  // Begins with kPageStart.
    {
        const Markup::Element html = page.Open("html", {{"lang", "en"}});
        WriteHead(page, title);
        const Markup::Element body = page.Open("body");
        const Markup::Element main = page.Open("main");
        page.TextElement("h1", title);
        write(page);
    }
    return page.Text();
}
