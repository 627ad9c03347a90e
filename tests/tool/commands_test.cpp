#include "tests/tool/tool_test.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

namespace mor::test {
namespace {

using nlohmann::json;

using Words = std::vector<std::string>;

class Commands : public ToolTest {
protected:
    /// A drawing with every kind of value in it.
    [[nodiscard]] std::string filled() const {
        return filledDrawing({{"/cfg/user/x", "(1 2 3)"},
                              {"/cfg/name", "\"K\xC3\xB6ln\""},
                              {"/cfg/scale", "0.1"},
                              {"/log/b1", "1"},
                              {"/log/a1", "(1 (2.5 \"x\") . 3)"}});
    }
};

std::vector<json> lines(const std::string& text) {
    std::vector<json> all;
    std::istringstream stream{text};
    for (std::string line; std::getline(stream, line);) all.push_back(json::parse(line));
    return all;
}

std::string keysOf(const json& object) {
    std::string all;
    for (const auto& [key, value] : object.items()) all += (all.empty() ? "" : " ") + key;
    return all;
}

TEST_F(Commands, AnswerOneWhenNothingMatches) {
    const std::string d = filled();
    for (const char* pattern : {"/none/*", "/cfg/none", "/CFG/*", "/*", "/cfg/user"}) {
        const Outcome found = run({"find", d, pattern});
        EXPECT_EQ(found.code, 1) << pattern;
        EXPECT_EQ(found.out + found.err, "") << pattern;
    }
    expectCode(0, "--help; put --help; --version");
}

TEST_F(Commands, AnswerTwoWhenCalledWrongly) {
    const std::string d = newDrawing();
    const std::string bytes = readFile(d);
    expectCode(2,
               "; put; put D; cat D; new ''; put D /a/x; put D /a/x 1 2; "
               "put D /a/x 1 --string 2; put D /a/x --file; put D /a/x --file @none; "
               "put D /a/x bare; put D /a/x (); put D /a/x '(1 2'; "
               "put D /a/x '1 2'; put D /a/x ''; put D /a/x \"\xFF\"; put D /a/x 1e999; "
               "put D /a/x 99999999999; put D /a/x 1 -o ''; put D /a/x --file ''; "
               "ls D --xref-path ''; load D ''; diff D ''; entities D --layer ''; "
               "ls D --xref-root @none; tree D / /; ls D -x; df D / /; "
               "new @n.dxf --release R11; new @n.dxf --release R13");
    expectCode(2, "put D /a/x '(1 bare)'",
               "column 4: bare is no value; write a text in quotes: \"bare\"");
    expectCode(2, "put D /a/x nil", "moradmin rm");
    expectCode(2, "nosuch D", "nosuch");
    EXPECT_EQ(readFile(d), bytes);
    EXPECT_EQ(names(), "d.dxf");
}

TEST_F(Commands, AnswerThreeWhenTheDrawingCannotBeRead) {
    writeFile(file("text"), "hello\n");
    writeFile(file("empty"), "");
    std::filesystem::create_directory(file("folder"));
    for (const char* name : {"@text", "@empty", "@folder", "@missing.dxf"})
        for (const char* line :
             {"info ", "cat /a/x ", "ls ", "find /a/* ", "df ", "put /a/x 1 ", "rm /a/x "}) {
            std::vector<std::string> call = words(line);
            call.insert(call.begin() + 1, words(name)[0]);
            expectCode(3, {call}, "moradmin: " + call[1]);
        }
}

TEST_F(Commands, ReadADamagedDrawingAsFarAsItGoesAndLeaveItAsItIs) {
    std::string bytes = readFile(filledDrawing({{"/cfg/x", "1"}, {"/cfg/y", "2"}}));
    bytes.resize(bytes.find("OBJECTS") + 40);
    writeFile(file("d.dxf"), bytes);
    writeFile(file("d.dxf.bak"), "");
    for (const auto& [line, out] :
         {std::pair{"cat D /cfg/x", "1\n"}, {"ls D /cfg", "x\ny\n"}, {"find D /*/y", "/cfg/y\n"}}) {
        const Outcome read = call(line);
        EXPECT_EQ(read.code, 4) << line;
        EXPECT_EQ(read.out, out);
        EXPECT_TRUE(holds(read.err, "the file ends inside the section OBJECTS")) << read.err;
        EXPECT_TRUE(holds(read.err, "d.dxf.bak is what was there")) << read.err;
    }
    EXPECT_TRUE(holds(call("info D").out, "damage    at byte "));
    EXPECT_TRUE(holds(call("check D").out, "error: drawing-damaged"));
    expectCode(5, "put D /cfg/x 3; rm D /cfg/x; wipe D --yes; put D /cfg/x 3 -o @e.dxf",
               "--salvage-drawing -o FILE");
    EXPECT_EQ(call("put D /cfg/x 3 --salvage-drawing").code, 2);
    EXPECT_EQ(call("put D /cfg/x 3 --salvage-drawing -o @e.dxf").code, 0);
    EXPECT_EQ(readFile(file("d.dxf")), bytes);
    EXPECT_EQ(call("cat @e.dxf /cfg/x /cfg/y").out, "3\n2\n");
    EXPECT_EQ(call("verify @e.dxf").code, 0);
    EXPECT_EQ(call("verify D").code, 4);
}

TEST_F(Commands, SalvageADamagedDrawingThatIsTooOldForValues) {
    const std::string whole =
        DxfDrawing{.entities = lineEntity("", "0"), .version = "AC1006"}.bytes();
    writeFile(file("d.dxf"), whole.substr(0, whole.rfind("0\nEOF")) + "0\nSECTION\n");
    expectCode(5, "put D /a/x 1; put D /a/x 1 --salvage-drawing -o @e.dxf", "hold no values");
    expectCode(5, "repair D", "--salvage-drawing -o FILE");
    EXPECT_EQ(call("repair D --salvage-drawing -o @e.dxf").code, 0);
    EXPECT_EQ(call("verify @e.dxf").code, 0);
    EXPECT_EQ(call("entities @e.dxf --count").out, "1\n");
}

TEST_F(Commands, AnswerFiveWhenTheDrawingCannotBeWritten) {
    const std::string d = newDrawing();
    const std::string bytes = readFile(d);
    expectCode(5, "new D", "exists");
    expectCode(5, "new @none/d.dxf; put D /a/x 1 -o @none/d.dxf");
    EXPECT_EQ(readFile(d), bytes);
    EXPECT_EQ(names(), "d.dxf");
}

TEST_F(Commands, AnswerSixWhenTheStoreRefuses) {
    const std::string d = filled();
    const std::string bytes = readFile(d);
    expectCode(6,
               "put D x 1; put D /x 1; put D /a/1 1; put D /a/x/ 1; put D //a/x 1; "
               "put D /a.b/x 1; put D /cfg/user 1; put D /cfg/>user 1; put D /cfg/name/x 1; put D "
               "/cfg/name/x/y/z 1; "
               "put D [/a/y] 1; cat D /cfg/none; cat D /none/x; cat D /cfg/user; "
               "cat D /cfg; rm D /cfg/none; rm D /cfg/user; rm D /cfg/name /cfg/none; "
               "rm D /cfg/name /cfg/name; ls D /none; tree D cfg; find D cfg/*",
               "moradmin: " + d + ": ");
    for (const std::string& path :
         {"/a/" + std::string(128, 'f'), "/" + std::string(127, 'd') + "/f"})
        expectCode(6, {{"put", d, path, "1"}}, "moradmin: " + d + ": ");
    expectCode(6, "cat D -- --json", "\"--json\" is no file path");
    expectCode(6, {{"find", d, "/" + std::string(1100, 'a')}}, "at most 1023 characters");
    EXPECT_EQ(readFile(d), bytes);
    EXPECT_EQ(names(), "d.dxf");
    EXPECT_EQ(call("rm D /cfg/name /log/b1").code, 0);
    EXPECT_EQ(call("ls -R D").out, "/cfg/\n/cfg/user/\n/cfg/user/x\n/cfg/scale\n/log/\n/log/a1\n");
}

TEST_F(Commands, TakeNegativeNumbersWithAndWithoutTheEndOfOptions) {
    newDrawing();
    expectCode(0,
               "put D /n/a -5; put D /n/b -- -5; put -- D /n/c -.5; "
               "put D --no-backup /n/d -1e3; put D /n/e --string -5; put D /n/f --string=-x");
    EXPECT_EQ(call("cat D /n/a /n/b /n/c /n/d /n/e /n/f").out,
              "-5\n-5\n-0.5\n-1000.0\n\"-5\"\n\"-x\"\n");
    std::filesystem::current_path(folder());
    expectCode(0, "new -5; put -5 /a/x -5 -o -6");
    EXPECT_EQ(call("cat -6 /a/x").out, "-5\n");
    std::filesystem::current_path("/");
}

TEST_F(Commands, ReadValuesFromStdinAndFiles) {
    newDrawing();
    writeFile(file("v"), " (1\n  \"two\" ; a remark\n 3.0)\n");
    EXPECT_EQ(call("put D /a/x -", "'(1 . 2)\n").code, 0);
    EXPECT_EQ(call("put D /a/y --file @v").code, 0);
    EXPECT_EQ(call("put D /a/z --file -", "\"z\"").code, 0);
    EXPECT_EQ(call("cat D /a/x /a/y /a/z").out, "(1 . 2)\n(1 \"two\" 3.0)\n\"z\"\n");
    const std::string text = "; no LISP (at all\n\ttwo lines\n";
    writeFile(file("t"), text);
    EXPECT_EQ(call("put D /a/x --string --file @t").code, 0);
    EXPECT_EQ(call("put D /a/y - --string", text).code, 0);
    EXPECT_EQ(call("cat --raw D /a/x /a/y").out, text + text);
}

TEST_F(Commands, StoreATextAsItStands) {
    const std::string d = newDrawing();
    for (const char* text :
         {" (1 \"2\") ^J \\U+0041 \xF0\x9F\x98\x80 nil\n", "", "[abc]", "[a,b]", "[]"}) {
        EXPECT_EQ(run({"put", d, "/a/x", "--string", text}).code, 0) << text;
        EXPECT_EQ(call("cat --raw D /a/x").out, text);
    }
    EXPECT_EQ(call("put D /a/x --string=[x]").code, 0);
    EXPECT_EQ(call("cat D /a/x").out, "\"[x]\"\n");
}

TEST_F(Commands, SayWhichWordOrTextIsWrong) {
    newDrawing();
    writeFile(file("latin"), "\"\xE4\"");
    const std::pair<const char*, std::string> rows[] = {
        {"nosuch D", "\"nosuch\" is not a command"},
        {"cat D", "PATH is missing"},
        {"point D 1", "too few words"},
        {"tree D / /", "too many words"},
        {"ls D --nope", "\"--nope\" is no option of this command"},
        {"cat D /a/\xE4", "the argument \"/a/\\xE4\" is not UTF-8"},
        {"put D /a/x --file @latin", file("latin") + ": is not UTF-8"},
        {"cat @none.dxf /a/x", file("none.dxf") + ": there is no such file"},
        {"run D -c nosuch", "line 1: \"nosuch\" is not a command"}};
    for (const auto& [line, said] : rows) EXPECT_TRUE(holds(call(line).err, said)) << line;
}

TEST_F(Commands, MakeADrawingOfEveryRelease) {
    const std::pair<const char*, const char*> releases[] = {
        {"R12", "AC1009"},   {"R2000", "AC1015"}, {"R2004", "AC1018"}, {"R2007", "AC1021"},
        {"r2010", "AC1024"}, {"R2013", "AC1027"}, {"R2018", "AC1032"}};
    for (const auto& [release, version] : releases) {
        const std::string d = newDrawing(std::string(release) + ".dxf", release);
        const json info = json::parse(run({"info", "--json", d}).out);
        EXPECT_EQ(info["version"], version);
        EXPECT_EQ(info["lineEnd"], "LF");
        EXPECT_EQ(info["store"]["state"], "none");
    }
    EXPECT_EQ(run({"new", file("crlf.dxf"), "--crlf"}).code, 0);
    EXPECT_EQ(json::parse(run({"info", "--json", file("crlf.dxf")}).out)["lineEnd"], "CRLF");
}

TEST_F(Commands, ListNamesInStoredOrder) {
    const std::string d = filled();
    for (const Words& words : {Words{"ls", d}, {"ls", d, "/"}})
        EXPECT_EQ(run(words).out, "cfg/\nlog/\n");
    for (const char* path : {"/cfg", "/cfg/"})
        EXPECT_EQ(run({"ls", d, path}).out, "user/\nname\nscale\n");
    EXPECT_EQ(call("ls -R D").out,
              "/cfg/\n/cfg/user/\n/cfg/user/x\n/cfg/name\n/cfg/scale\n/log/\n/log/b1\n/log/a1\n");
    EXPECT_EQ(call("ls -l D /cfg").out,
              "dir\t66\t16317\tuser/\nstring\t18\t-\tname\nreal\t16\t-\tscale\n");
}

TEST_F(Commands, ListNothingWithoutAStore) {
    const std::string d = newDrawing();
    const std::string bytes = readFile(d);
    for (const Words& words : {Words{"ls", d}, {"ls", d, "/"}, {"ls", "-lR", d}, {"df", d}}) {
        const Outcome listed = run(words);
        EXPECT_EQ(listed.code, 0) << listed.err;
        EXPECT_EQ(listed.out + listed.err, "") << words[0];
    }
    expectCode(6, "ls D /cfg; cat D /cfg/x; rm D /cfg/x");
    expectCode(1, "find D /*/x");
    EXPECT_EQ(readFile(d), bytes);
    EXPECT_EQ(names(), "d.dxf");
    // 3 for the list, 20 + 21 for $ID and $INFO, the link ^a with its handle 8 + 2 + 4.
    EXPECT_EQ(run({"put", d, "/a/x", "(1 2 3)"}).code, 0);
    EXPECT_EQ(call("df D").out, "50\t16333\t1\t/\n59\t16324\t1\t/a\n");
}

TEST_F(Commands, FindFilesByPattern) {
    const std::string d = filledDrawing(
        {{"/p1/ab", "1"}, {"/p1/b2", "2"}, {"/p2/ab", "3"}, {"/q/ab", "4"}, {"/p1/deep/ab", "5"}});
    const std::pair<const char*, const char*> cases[] = {{"/p1/ab", "/p1/ab\n"},
                                                         {"/*/*b", "/p1/ab\n/p2/ab\n/q/ab\n"},
                                                         {"/p1/*/ab", "/p1/deep/ab\n"}};
    for (const auto& [pattern, found] : cases) EXPECT_EQ(run({"find", d, pattern}).out, found);
    EXPECT_EQ(call("find D /p#/ab --values").out, "/p1/ab\t1\n/p2/ab\t3\n");
}

TEST_F(Commands, SayWhyNothingCanBeMadeAndWhatHelps) {
    DxfDrawing drawing{.entities = lineEntity("A1", "0"),
                       .header = "9 $HANDSEED|5 FFFFFFFFFFFFFFFE|"};
    drawing.save("d.dxf");
    const std::string bytes = readFile(file("d.dxf"));
    expectCode(
        6, "put D /a/x 1; put D /a/b/c/x 1",
        "its $HANDSEED is FFFFFFFFFFFFFFFE, though no handle is larger than A1; set it to A2");
    EXPECT_EQ(readFile(file("d.dxf")), bytes);
    exchange(file("d.dxf"), "5 FFFFFFFFFFFFFFFE", "5 A2");
    EXPECT_EQ(call("put D /a/x 1").code, 0);
    drawing.entities = lineEntity("FFFFFFFFFFFFFFFE", "0");
    drawing.save("d.dxf");
    expectCode(6, "put D /a/x 1", "the handle FFFFFFFFFFFFFFFE is in use");
}

TEST_F(Commands, NameCandidatesThatAreTooLongToFind) {
    const std::string deep = "/" + std::string(62, 'a') + "/" + std::string(62, 'b');
    const std::string d = filledDrawing({{deep + "/x", "1"}, {deep + "/xy", "2"}});
    const Outcome found = call("find D /*/*/x*");
    EXPECT_EQ(found.code, 1);
    const std::string skipped =
        "moradmin: " + d + ": skipped, its path has more than 127 characters: ";
    EXPECT_EQ(found.out + found.err, skipped + deep + "/x\n" + skipped + deep + "/xy\n");
}

// ---- JSON ---------------------------------------------------------------------------------------

TEST_F(Commands, PrintValuesAsJson) {
    const std::string d = filled();
    const auto all = lines(call("cat --json D /cfg/user/x /cfg/name /log/a1").out);
    ASSERT_EQ(all.size(), 3u);
    for (const json& object : all)
        EXPECT_EQ(keysOf(object), "command drawing kind lisp moradmin path type value");
    EXPECT_EQ(all[0]["value"], json::parse("[1,2,3]"));
    EXPECT_EQ(all[0]["lisp"], "(1 2 3)");
    EXPECT_EQ(all[1]["value"], "K\xC3\xB6ln");
    EXPECT_EQ(all[1]["type"], "string");
    EXPECT_EQ(all[2]["value"], json::parse(R"({"list":[1,[2.5,"x"]],"tail":3})"));
    EXPECT_EQ(all[2]["type"], "dotted");
}

TEST_F(Commands, PrintTheLispOfValuesThatAreTooDeepForJson) {
    const std::string d = newDrawing();
    const std::string deep = std::string(3900, '(') + "1" + std::string(3900, ')');
    ASSERT_EQ(run({"put", d, "/a/x", "-"}, deep).code, 0);
    const json shown = json::parse(call("cat --json D /a/x").out);
    EXPECT_EQ(shown["lisp"], deep);
    std::size_t depth = 0;
    json value = shown["value"];
    for (; value.is_array(); value = json(value[0])) ++depth;
    EXPECT_EQ(depth, 256u);
    EXPECT_TRUE(value.is_null());
    const Outcome dump = call("dump D");
    const std::string other = newDrawing("other.dxf");
    EXPECT_EQ(run({"load", other}, dump.out).code, 0);
    EXPECT_EQ(run({"cat", other, "/a/x"}).out, deep + "\n");
}

TEST_F(Commands, PrintListingsAsJson) {
    const std::string d = filled();
    const json listed = json::parse(call("ls --json D /cfg").out);
    EXPECT_EQ(keysOf(listed), "command drawing entries moradmin path");
    EXPECT_EQ(listed["moradmin"], 2);
    EXPECT_EQ(keysOf(listed["entries"][0]), "free kind name path type used");
    EXPECT_EQ(keysOf(listed["entries"][1]), "free kind name path type used");
    EXPECT_EQ(listed["entries"][0]["path"], "/cfg/user");
    const json room = json::parse(call("df --json D").out);
    EXPECT_EQ(keysOf(room["directories"][0]), "entries free path used");
    EXPECT_EQ(room["directories"].size(), 4u);
    const json info = json::parse(call("info --json D").out);
    EXPECT_EQ(info["store"]["directories"], 4);
    EXPECT_EQ(info["store"]["files"], 5);
    EXPECT_EQ(lines(call("find --json D /log/*").out)[1]["path"], "/log/a1");
}

TEST_F(Commands, PrintErrorsAsJsonOnStderr) {
    const std::string d = newDrawing();
    const Outcome missing = call("cat --json D /a/x");
    EXPECT_EQ(missing.out, "");
    const json object = json::parse(missing.err);
    EXPECT_EQ(keysOf(object), "command drawing error moradmin");
    EXPECT_EQ(keysOf(object["error"]), "code message path");
    EXPECT_EQ(object["error"]["code"], 6);
    EXPECT_EQ(object["error"]["path"], "/a/x");
    const json unread = json::parse(run({"ls", "--json", file("none.dxf")}).err);
    EXPECT_EQ(unread["error"]["code"], 3);
    EXPECT_EQ(unread["error"]["path"], file("none.dxf"));
}

}  // namespace
}  // namespace mor::test
