#include "tests/tool/tool_test.h"

#include <nlohmann/json.hpp>

namespace mor::test {
namespace {

/// A page of a drawing with a reference, a store, attributes and extended data, in a browser.
class PageTool : public ToolTest {
protected:
    void SetUp() override {
        ToolTest::SetUp();
        for (const char* name : {"floor_plan.dxf", "site_plan.dxf"})
            writeFile(file(name), readFile(std::filesystem::path(MORADMIN_SAMPLES) / name));
        ASSERT_EQ(call("put @floor_plan.dxf /cfg/user/x '(1 2 3)'").code, 0);
        ASSERT_EQ(call("put @floor_plan.dxf /cfg/t --string '</script><b>'").code, 0);
    }
    /// What the page answers to each of the steps; empty where there is no browser.
    std::vector<nlohmann::json> drive(const std::vector<nlohmann::json>& steps) const {
        std::string text;
        for (const auto& step : steps) text += step.dump() + "\n";
        writeFile(file("steps"), text);
        const Outcome driven = runProgram(
            {"/usr/bin/python3", MORADMIN_PAGE_DRIVER, file("page.html"), file("steps")}, folder());
        if (driven.code == 77) return {};
        EXPECT_EQ(driven.code, 0) << driven.err;
        std::vector<nlohmann::json> answers;
        std::istringstream lines{driven.out};
        for (std::string line; std::getline(lines, line);)
            answers.push_back(nlohmann::json::parse(line));
        return answers;
    }
};

TEST_F(PageTool, HoldsEverythingItShows) {
    ASSERT_EQ(call("view @floor_plan.dxf -o @page.html").code, 0);
    const std::string page = readFile(file("page.html"));
    EXPECT_TRUE(holds(page, "default-src 'none'"));
    for (const char* other : {"src=\"", "<link", "@import", "url(http"})
        EXPECT_FALSE(holds(page, other)) << other;
    EXPECT_FALSE(holds(page, "<b>"));
    EXPECT_EQ(call("view @floor_plan.dxf").out, page);
    EXPECT_EQ(call("view @floor_plan.dxf -o @site_plan.dxf").code, 2);
    EXPECT_EQ(call("view @floor_plan.dxf -o @none/p.html").code, 5);
    EXPECT_EQ(call("view @floor_plan.dxf --layout Nowhere").code, 6);
}

TEST_F(PageTool, IsUsedInABrowser) {
    ASSERT_EQ(call("view @floor_plan.dxf -o @page.html").code, 0);
    const auto script = [](const std::string& text) { return nlohmann::json{"script", text}; };
    const auto shown = [&](const std::string& layer) {
        return script("return getComputedStyle(document.querySelector('#stage path[data-layer=\"" +
                      layer + "\"]')).display");
    };
    const auto panel = [&](const std::string& name) {
        return script("return document.getElementById('panel-" + name + "').innerText");
    };
    // The wall in the middle of the plan.
    const std::string at =
        "const s = document.getElementById('stage').getBoundingClientRect(), "
        "r = document.querySelector('[data-handle=\"3E\"]')"
        ".getBoundingClientRect(); ";
    const std::string press =
        at +
        "for (const type of ['pointerdown', 'pointerup']) "
        "document.getElementById('stage').dispatchEvent(new PointerEvent(type, {pointerId: 1, "
        "clientX: r.x + r.width / 2 + 2, clientY: r.y + r.height / 4})); return 0";
    const auto answers = drive({
        script(at + "document.getElementById('stage').setPointerCapture = () => 0; return 0"),
        script(press),
        panel("element"),
        {"click", "#tab-layers"},
        {"click", "[data-switch='WALLS']"},
        shown("WALLS"),
        shown("SITE|ROAD"),
        {"click", "#tab-references"},
        {"click", "[data-switch='SITE']"},
        shown("SITE|ROAD"),
        {"click", "#tab-store"},
        script(
            "const open = () => document.querySelectorAll('#panel-store details')"
            ".forEach(d => d.open = true); for (let i = 0; i < 5; ++i) setTimeout(open, 40 * i); "
            "return new Promise(r => setTimeout(r, 400))"),
        panel("store"),
        panel("findings"),
        script("const s = document.querySelector('#stage svg'), v = s.getAttribute('viewBox'); "
               "document.getElementById('stage').focus(); window.before = v; return 0"),
        {"key", "+"},
        script("return document.querySelector('#stage svg').getAttribute('viewBox') !== before"),
        {"key", "f"},
        script("return document.querySelector('#stage svg').getAttribute('viewBox') === before"),
    });
    if (answers.empty()) GTEST_SKIP() << "no chromedriver (chromium-driver)";
    const auto text = [&](std::size_t step) { return answers.at(step + 1).get<std::string>(); };
    EXPECT_TRUE(text(2).starts_with("Handle\t3E\nType\tLINE\nLayer\tWALLS\n")) << text(2);
    EXPECT_TRUE(holds(text(2), "6, 0.3\n2\t6, 7.7"));
    EXPECT_EQ(text(5), "none");
    EXPECT_EQ(text(6), "inline");
    EXPECT_EQ(text(9), "none");
    EXPECT_TRUE(holds(text(12), "(1 2 3)") && holds(text(12), "\"</script><b>\"")) << text(12);
    EXPECT_TRUE(holds(text(13), "nothing wrong"));
    EXPECT_EQ(answers.at(17), true);
    EXPECT_EQ(answers.at(19), true);
    EXPECT_EQ(answers.back(), nlohmann::json::array());  // no complaint of the browser
}

}  // namespace
}  // namespace mor::test
