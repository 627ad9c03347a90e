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

// ---- exit codes ---------------------------------------------------------------------------------

TEST_F(Commands, AnswerZeroWhenDone) {
    const std::string d = newDrawing();
    EXPECT_EQ(run({"put", d, "/a/x", "1"}).code, 0);
    for (const Words& words : {Words{"info", d},
                               {"cat", d, "/a/x"},
                               {"ls", d},
                               {"find", d, "/a/*"},
                               {"df", d},
                               {"rm", d, "/a/x"},
                               {"--help"},
                               {"put", "--help"},
                               {"--version"}})
        EXPECT_EQ(run(words).code, 0) << words[0];
}

TEST_F(Commands, AnswerOneWhenNothingMatches) {
    const std::string d = filled();
    for (const char* pattern : {"/none/*", "/cfg/none", "/CFG/*", "/*", "/cfg/user"}) {
        const Outcome found = run({"find", d, pattern});
        EXPECT_EQ(found.code, 1) << pattern;
        EXPECT_EQ(found.out + found.err, "") << pattern;
    }
}

TEST_F(Commands, AnswerTwoWhenCalledWrongly) {
    const std::string d = newDrawing();
    const std::string bytes = readFile(d);
    const Words calls[] = {{},
                           {"nosuch", d},
                           {"put"},
                           {"put", d},
                           {"put", d, "/a/x"},
                           {"put", d, "/a/x", "1", "2"},
                           {"put", d, "/a/x", "1", "--string", "2"},
                           {"put", d, "/a/x", "--file"},
                           {"put", d, "/a/x", "--file", file("none")},
                           {"put", d, "/a/x", "1", "--json"},
                           {"put", d, "/a/x", "bare"},
                           {"put", d, "/a/x", "nil"},
                           {"put", d, "/a/x", "()"},
                           {"put", d, "/a/x", "(1 2"},
                           {"put", d, "/a/x", "1 2"},
                           {"put", d, "/a/x", ""},
                           {"put", d, "/a/x", "\"\xFF\""},
                           {"put", d, "/a/x", "1e999"},
                           {"put", d, "/a/x", "99999999999"},
                           {"put", d, "/a/x", "1", "-o", ""},
                           {"put", d, "/a/x", "--file", ""},
                           {"ls", d, "--xref-path", ""},
                           {"new", ""},
                           {"load", d, ""},
                           {"diff", d, ""},
                           {"entities", d, "--layer", ""},
                           {"ls", d, "--xref-root", file("none")},
                           {"cat", d},
                           {"ls", d, "/", "/"},
                           {"ls", d, "-x"},
                           {"df", d, "/"},
                           {"new", file("n.dxf"), "--release", "R11"},
                           {"new", file("n.dxf"), "--release", "R13"}};
    for (const Words& words : calls) {
        std::string all;
        for (const std::string& word : words) all += word + " ";
        const Outcome outcome = run(words);
        EXPECT_EQ(outcome.code, 2) << all;
        EXPECT_EQ(outcome.out, "") << all;
        EXPECT_NE(outcome.err, "") << all;
    }
    EXPECT_EQ(readFile(d), bytes);
    EXPECT_EQ(names(), "d.dxf");
}

TEST_F(Commands, AnswerThreeWhenTheDrawingCannotBeRead) {
    writeFile(file("text"), "hello\n");
    writeFile(file("empty"), "");
    writeFile(file("cut.dxf"), "0\nSECTION\n2\nENTITIES\n0\nLINE\n8\n0\n");
    std::filesystem::create_directory(file("folder"));
    for (const char* name : {"text", "empty", "cut.dxf", "folder", "missing.dxf"})
        for (const Words& words : {Words{"info"},
                                   {"cat", "/a/x"},
                                   {"ls"},
                                   {"find", "/a/*"},
                                   {"df"},
                                   {"put", "/a/x", "1"},
                                   {"rm", "/a/x"}}) {
            Words call = words;
            call.insert(call.begin() + 1, file(name));
            const Outcome outcome = run(call);
            EXPECT_EQ(outcome.code, 3) << name << " " << words[0];
            EXPECT_TRUE(outcome.err.starts_with("moradmin: " + file(name))) << outcome.err;
        }
}

TEST_F(Commands, AnswerFiveWhenTheDrawingCannotBeWritten) {
    const std::string d = newDrawing();
    const std::string bytes = readFile(d);
    EXPECT_EQ(run({"new", d}).code, 5);
    EXPECT_EQ(run({"new", file("none/d.dxf")}).code, 5);
    EXPECT_EQ(run({"put", d, "/a/x", "1", "-o", file("none/d.dxf")}).code, 5);
    EXPECT_EQ(readFile(d), bytes);
}

TEST_F(Commands, AnswerSixWhenTheStoreRefuses) {
    const std::string d = filled();
    const std::string bytes = readFile(d);
    const Words calls[] = {{"put", d, "x", "1"},
                           {"put", d, "/x", "1"},
                           {"put", d, "/a/1", "1"},
                           {"put", d, "/a/x/", "1"},
                           {"put", d, "//a/x", "1"},
                           {"put", d, "/a.b/x", "1"},
                           {"put", d, "/a/" + std::string(128, 'f'), "1"},
                           {"put", d, "/" + std::string(127, 'd') + "/f", "1"},
                           {"put", d, "/cfg/user", "1"},
                           {"put", d, "/cfg/>user", "1"},
                           {"put", d, "/cfg/name/x", "1"},
                           {"cat", d, "/cfg/none"},
                           {"cat", d, "/none/x"},
                           {"cat", d, "/cfg/user"},
                           {"cat", d, "/cfg"},
                           {"rm", d, "/cfg/none"},
                           {"rm", d, "/cfg/user"},
                           {"rm", d, "/cfg/name", "/cfg/none"},
                           {"ls", d, "/none"},
                           {"ls", d, "cfg"},
                           {"find", d, "cfg/*"}};
    for (const Words& words : calls) {
        const Outcome outcome = run(words);
        EXPECT_EQ(outcome.code, 6) << words[0] << " " << words[2];
        EXPECT_TRUE(outcome.err.starts_with("moradmin: " + d + ": ")) << outcome.err;
    }
    EXPECT_EQ(readFile(d), bytes);
    EXPECT_EQ(names(), "d.dxf");
}

// ---- values on the command line -----------------------------------------------------------------

TEST_F(Commands, TakeNegativeNumbersWithAndWithoutTheEndOfOptions) {
    const std::string d = newDrawing();
    EXPECT_EQ(run({"put", d, "/n/a", "-5"}).code, 0);
    EXPECT_EQ(run({"put", d, "/n/b", "--", "-5"}).code, 0);
    EXPECT_EQ(run({"put", "--", d, "/n/c", "-.5"}).code, 0);
    EXPECT_EQ(run({"put", d, "--no-backup", "/n/d", "-1e3"}).code, 0);
    EXPECT_EQ(run({"put", d, "/n/e", "--string", "-5"}).code, 0);
    EXPECT_EQ(run({"put", d, "/n/f", "--string=-x"}).code, 0);
    EXPECT_EQ(run({"cat", d, "/n/a", "/n/b", "/n/c", "/n/d", "/n/e", "/n/f"}).out,
              "-5\n-5\n-0.5\n-1000.0\n\"-5\"\n\"-x\"\n");
}

TEST_F(Commands, TakeAnythingBehindTheEndOfOptionsAsAnArgument) {
    const Outcome outcome = run({"cat", newDrawing(), "--", "--json"});
    EXPECT_EQ(outcome.code, 6);
    EXPECT_TRUE(holds(outcome.err, "\"--json\" is no file path"));
}

TEST_F(Commands, WorkOnDrawingsWhoseNamesLookLikeNumbers) {
    std::filesystem::current_path(folder());
    EXPECT_EQ(run({"new", "-5"}).code, 0);
    EXPECT_EQ(run({"put", "-5", "/a/x", "-5", "-o", "-6"}).code, 0);
    EXPECT_EQ(run({"cat", "-6", "/a/x"}).out, "-5\n");
    EXPECT_EQ(names(), "-5 -6");
    std::filesystem::current_path("/");
}

TEST_F(Commands, ReadValuesFromStdinAndFiles) {
    const std::string d = newDrawing();
    writeFile(file("v"), " (1\n  \"two\" ; a remark\n 3.0)\n");
    EXPECT_EQ(run({"put", d, "/a/x", "-"}, "'(1 . 2)\n").code, 0);
    EXPECT_EQ(run({"put", d, "/a/y", "--file", file("v")}).code, 0);
    EXPECT_EQ(run({"put", d, "/a/z", "--file", "-"}, "\"z\"").code, 0);
    EXPECT_EQ(run({"cat", d, "/a/x", "/a/y", "/a/z"}).out, "(1 . 2)\n(1 \"two\" 3.0)\n\"z\"\n");
}

TEST_F(Commands, StoreATextAsItStands) {
    const std::string d = newDrawing();
    const std::string text = " (1 \"2\") ^J \\U+0041 \xF0\x9F\x98\x80 nil\n";
    EXPECT_EQ(run({"put", d, "/a/x", "--string", text}).code, 0);
    EXPECT_EQ(run({"cat", "--raw", d, "/a/x"}).out, text + "\n");
    EXPECT_EQ(run({"put", d, "/a/x", "--string", ""}).code, 0);
    EXPECT_EQ(run({"cat", d, "/a/x"}).out, "\"\"\n");
}

TEST_F(Commands, StoreTextsFromFilesAndStdinAsOneString) {
    const std::string d = newDrawing();
    const std::string text = "; no LISP (at all\n\ttwo lines\n";
    writeFile(file("t"), text);
    EXPECT_EQ(run({"put", d, "/a/x", "--string", "--file", file("t")}).code, 0);
    EXPECT_EQ(run({"put", d, "/a/y", "-", "--string"}, text).code, 0);
    EXPECT_EQ(run({"cat", "--raw", d, "/a/x", "/a/y"}).out, text + "\n" + text + "\n");
}

TEST_F(Commands, SayWhatWouldWorkInsteadOfABareWordAndNil) {
    const std::string d = newDrawing();
    const Outcome bare = run({"put", d, "/a/x", "(1 bare)"});
    EXPECT_TRUE(holds(bare.err, "\"bare\""));
    EXPECT_TRUE(holds(bare.err, "column 4"));
    const Outcome nil = run({"put", d, "/a/x", "nil"});
    EXPECT_TRUE(holds(nil.err, "moradmin rm"));
    const Outcome command = run({"nosuch", d});
    EXPECT_TRUE(holds(command.err, "nosuch"));
}

// ---- new ----------------------------------------------------------------------------------------

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

TEST_F(Commands, NeverOverwriteWithANewDrawing) {
    writeFile(file("d.dxf"), "precious");
    const Outcome made = run({"new", file("d.dxf")});
    EXPECT_EQ(made.code, 5);
    EXPECT_TRUE(holds(made.err, "exists"));
    EXPECT_EQ(readFile(file("d.dxf")), "precious");
    EXPECT_EQ(names(), "d.dxf");
}

// ---- listings -----------------------------------------------------------------------------------

TEST_F(Commands, ListNamesInStoredOrder) {
    const std::string d = filled();
    EXPECT_EQ(run({"ls", d}).out, "cfg/\nlog/\n");
    EXPECT_EQ(run({"ls", d, "/"}).out, "cfg/\nlog/\n");
    EXPECT_EQ(run({"ls", d, "/cfg"}).out, "user/\nname\nscale\n");
    EXPECT_EQ(run({"ls", d, "/cfg/"}).out, "user/\nname\nscale\n");
    EXPECT_EQ(run({"ls", d, "/log"}).out, "b1\na1\n");
    EXPECT_EQ(run({"ls", "-R", d}).out,
              "cfg/\ncfg/user/\ncfg/user/x\ncfg/name\ncfg/scale\nlog/\nlog/b1\nlog/a1\n");
    EXPECT_EQ(run({"ls", "-l", d, "/cfg"}).out,
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
    EXPECT_EQ(run({"ls", d, "/cfg"}).code, 6);
    EXPECT_EQ(run({"find", d, "/*/x"}).code, 1);
    EXPECT_EQ(run({"cat", d, "/cfg/x"}).code, 6);
    EXPECT_EQ(run({"rm", d, "/cfg/x"}).code, 6);
    EXPECT_EQ(readFile(d), bytes);
    EXPECT_EQ(names(), "d.dxf");
}

TEST_F(Commands, TellTheRoomOfEveryDirectory) {
    const std::string d = filledDrawing({{"/a/x", "(1 2 3)"}});
    // 3 for the list, 20 + 21 for $ID and $INFO, the link ^a with its handle 8 + 2 + 4.
    EXPECT_EQ(run({"df", d}).out, "50\t16333\t1\t/\n59\t16324\t1\t/a\n");
}

// ---- find ---------------------------------------------------------------------------------------

TEST_F(Commands, FindFilesByPattern) {
    const std::string d = filledDrawing(
        {{"/p1/ab", "1"}, {"/p1/b2", "2"}, {"/p2/ab", "3"}, {"/q/ab", "4"}, {"/p1/deep/ab", "5"}});
    const std::pair<const char*, const char*> cases[] = {
        {"/p1/ab", "/p1/ab\n"},        {"/p#/ab", "/p1/ab\n/p2/ab\n"},
        {"/p1/*", "/p1/ab\n/p1/b2\n"}, {"/*/*b", "/p1/ab\n/p2/ab\n/q/ab\n"},
        {"/p1/*/ab", "/p1/deep/ab\n"}, {"/p1/b?", "/p1/b2\n"},
        {"/p1/@@", "/p1/ab\n"},        {"/[~q]#/ab", "/p1/ab\n/p2/ab\n"},
        {"/p1/~b*", "/p1/ab\n"},       {"/p1/ab,b2", "/p1/ab\n/p1/b2\n"},
        {"/p[2-9]/*", "/p2/ab\n"}};
    for (const auto& [pattern, found] : cases) EXPECT_EQ(run({"find", d, pattern}).out, found);
    EXPECT_EQ(run({"find", d, "/p#/ab", "--values"}).out, "/p1/ab\t1\n/p2/ab\t3\n");
}

TEST_F(Commands, SayWhyNothingCanBeFoundOrMade) {
    const std::string d = newDrawing();
    const Outcome pattern = run({"find", d, "/" + std::string(1100, 'a')});
    EXPECT_EQ(pattern.code, 6);
    EXPECT_TRUE(holds(pattern.err, "at most 1023 characters"));
    std::string bytes = readFile(d);
    const std::size_t seed = bytes.find("\n", bytes.find("$HANDSEED") + 10) + 1;
    bytes.replace(seed, bytes.find('\n', seed) - seed, "FFFFFFFFFFFFFFFE");
    writeFile(d, bytes);
    const Outcome put = run({"put", d, "/a/x", "1"});
    EXPECT_EQ(put.code, 6);
    EXPECT_TRUE(holds(put.err, "no handle left"));
    EXPECT_EQ(readFile(d), bytes);
}

TEST_F(Commands, NameCandidatesThatAreTooLongToFind) {
    const std::string deep = "/" + std::string(62, 'a') + "/" + std::string(62, 'b');
    const std::string d = filledDrawing({{deep + "/x", "1"}, {deep + "/xy", "2"}});
    const Outcome found = run({"find", d, "/*/*/x*"});
    EXPECT_EQ(found.out, "");
    EXPECT_EQ(found.code, 1);
    EXPECT_EQ(found.err, "moradmin: " + d + ": skipped, its path has more than 127 characters: " +
                             deep + "/x\n" + "moradmin: " + d +
                             ": skipped, its path has more than 127 characters: " + deep + "/xy\n");
}

// ---- JSON ---------------------------------------------------------------------------------------

TEST_F(Commands, PrintValuesAsJson) {
    const std::string d = filled();
    const auto all = lines(run({"cat", "--json", d, "/cfg/user/x", "/cfg/name", "/log/a1"}).out);
    ASSERT_EQ(all.size(), 3u);
    for (const json& object : all)
        EXPECT_EQ(keysOf(object), "command lisp moradmin path type value");
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
    const json shown = json::parse(run({"cat", "--json", d, "/a/x"}).out);
    EXPECT_EQ(shown["lisp"], deep);
    std::size_t depth = 0;
    json value = shown["value"];
    for (; value.is_array(); value = json(value[0])) ++depth;
    EXPECT_EQ(depth, 256u);
    EXPECT_TRUE(value.is_null());
    const Outcome dump = run({"dump", d});
    const std::string other = newDrawing("other.dxf");
    EXPECT_EQ(run({"load", other}, dump.out).code, 0);
    EXPECT_EQ(run({"cat", other, "/a/x"}).out, deep + "\n");
}

TEST_F(Commands, PrintListingsAsJson) {
    const std::string d = filled();
    const json listed = json::parse(run({"ls", "--json", d, "/cfg"}).out);
    EXPECT_EQ(keysOf(listed), "command entries moradmin path");
    EXPECT_EQ(listed["moradmin"], 1);
    EXPECT_EQ(keysOf(listed["entries"][0]), "free kind name path used");
    EXPECT_EQ(keysOf(listed["entries"][1]), "kind name path type used");
    EXPECT_EQ(listed["entries"][0]["path"], "/cfg/user");
    const json room = json::parse(run({"df", "--json", d}).out);
    EXPECT_EQ(keysOf(room["directories"][0]), "entries free path used");
    EXPECT_EQ(room["directories"].size(), 4u);
    const json info = json::parse(run({"info", "--json", d}).out);
    EXPECT_EQ(info["store"]["directories"], 4);
    EXPECT_EQ(info["store"]["files"], 5);
    EXPECT_EQ(lines(run({"find", "--json", d, "/log/*"}).out)[1]["path"], "/log/a1");
}

TEST_F(Commands, PrintErrorsAsJsonOnStderr) {
    const std::string d = newDrawing();
    const Outcome missing = run({"cat", "--json", d, "/a/x"});
    EXPECT_EQ(missing.out, "");
    const json object = json::parse(missing.err);
    EXPECT_EQ(keysOf(object), "command error moradmin");
    EXPECT_EQ(keysOf(object["error"]), "code message path");
    EXPECT_EQ(object["error"]["code"], 6);
    EXPECT_EQ(object["error"]["path"], "/a/x");
    const json unread = json::parse(run({"ls", "--json", file("none.dxf")}).err);
    EXPECT_EQ(unread["error"]["code"], 3);
    EXPECT_EQ(unread["error"]["path"], file("none.dxf"));
}

TEST_F(Commands, TakeWordsInBracketsAsTheyStand) {
    const std::string d = newDrawing();
    for (const char* text : {"[abc]", "[a,b]", "[]"}) {
        EXPECT_EQ(run({"put", d, "/a/x", "--string", text}).code, 0) << text;
        EXPECT_EQ(run({"cat", d, "/a/x", "-r"}).out, text + std::string("\n"));
    }
    EXPECT_EQ(run({"put", d, "/a/x", "--string=[x]"}).code, 0);
    EXPECT_EQ(run({"cat", d, "/a/x"}).out, "\"[x]\"\n");
    EXPECT_EQ(run({"put", d, "[/a/y]", "1"}).code, 6);
}

// ---- rm -----------------------------------------------------------------------------------------

TEST_F(Commands, RemoveFilesAllOrNone) {
    const std::string d = filled();
    const std::string bytes = readFile(d);
    EXPECT_EQ(run({"rm", d, "/cfg/name", "/log/none"}).code, 6);
    EXPECT_EQ(readFile(d), bytes);
    EXPECT_EQ(run({"rm", d, "/cfg/name", "/log/b1"}).code, 0);
    EXPECT_EQ(run({"ls", "-R", d}).out, "cfg/\ncfg/user/\ncfg/user/x\ncfg/scale\nlog/\nlog/a1\n");
}

TEST_F(Commands, RefuseToRemoveAFileTwice) {
    const std::string d = filled();
    EXPECT_EQ(run({"rm", d, "/cfg/name", "/cfg/name"}).code, 6);
    EXPECT_EQ(run({"cat", d, "/cfg/name"}).code, 0);
}

}  // namespace
}  // namespace mor::test
