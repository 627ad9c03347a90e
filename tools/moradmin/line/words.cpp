#include "tools/moradmin/line/words.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <string_view>
#include <utility>

namespace mor::tool {

namespace {

/// Stands before a word such as -5 while the words are sorted, so that it is not taken for an
/// option, and before one such as [a,b], so that it is not taken for a list of words.
constexpr char kMark = '\x01';
constexpr std::string_view kStringOption = "--string";
constexpr std::string_view kLongOption = "--";
constexpr std::string_view kStdinPlace = "-:/";  ///< a path in the drawing from stdin

bool isNegativeNumber(std::string_view word) {
    const auto digit = [&](std::size_t at) {
        return at < word.size() && std::isdigit(static_cast<unsigned char>(word[at])) != 0;
    };
    return word.size() > 1 && word[0] == '-' && (digit(1) || (word[1] == '.' && digit(2)));
}

/// Puts a word behind the others, marked when the parser would see more in it than a word. Of
/// `--option=[...]` the value becomes a word of its own.
void append(std::vector<std::string>& words, std::string word, bool optionsEnded) {
    const std::size_t equals = word.find('=');
    const bool option = !optionsEnded && word.starts_with(kLongOption);
    if (option && equals != std::string::npos &&
        (word.starts_with(std::string(kStringOption) + "=") || word.find("=[") == equals)) {
        words.push_back(word.substr(0, equals));
        words.push_back(kMark + word.substr(equals + 1));
        return;
    }
    if (!optionsEnded && word == "-type") word = "--type";  // as another well-known find has it
    const bool marked = optionsEnded ? word.starts_with('-')
                                     : isNegativeNumber(word) || word.starts_with(kStdinPlace);
    if (marked || word.starts_with('[')) word.insert(word.begin(), kMark);
    words.push_back(std::move(word));
}

void unmark(std::string& word) {
    if (!word.empty() && word.front() == kMark) word.erase(word.begin());
}

}  // namespace

std::vector<std::string> reversedWords(const std::vector<std::string>& words) {
    std::vector<std::string> result;
    bool optionsEnded = false;
    for (const std::string& word : words) {
        if (word == kLongOption && !optionsEnded)
            optionsEnded = true;
        else
            append(result, word, optionsEnded);
    }
    std::ranges::reverse(result);
    return result;
}

void unmarkAll(Options& options) {
    for (std::vector<std::string>* words : {&options.arguments, &options.layers, &options.types,
                                            &options.referenceFolders, &options.referenceMappings})
        std::ranges::for_each(*words, unmark);
    for (std::string* word :
         {&options.drawing, &options.output, &options.release, &options.inside, &options.extensions,
          &options.kind, &options.application, &options.picture.window, &options.picture.layout,
          &options.picture.size, &options.picture.scale, &options.picture.form,
          &options.picture.background, &options.manual})
        unmark(*word);
    for (std::optional<std::string>* word :
         {&options.fileValue, &options.script, &options.referenceRoot})
        if (*word) unmark(**word);
}

std::string withoutMarks(std::string text) {
    std::erase(text, kMark);
    return text;
}

std::vector<std::string> commandFirst(std::vector<std::string> words,
                                      const std::set<std::string>& valued) {
    std::size_t at = 0;
    while (at < words.size() && words[at].starts_with('-') && words[at].size() > 1) {
        if (words[at] == kLongOption) {
            ++at;
            break;
        }
        at += valued.contains(words[at]) ? 2 : 1;
    }
    if (at == 0 || at >= words.size()) return words;
    std::rotate(words.begin(), words.begin() + static_cast<std::ptrdiff_t>(at),
                words.begin() + static_cast<std::ptrdiff_t>(at) + 1);
    return words;
}

}  // namespace mor::tool
