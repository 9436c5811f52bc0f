#include "CommandText.h"

#include <boost/lexical_cast.hpp>
#include <boost/tokenizer.hpp>

namespace sysctrlservice {

void splitCommandWords(const std::string& line, std::vector<std::string>& words) {
    typedef boost::tokenizer<boost::char_separator<char>> Tokenizer;
    words.clear();
    const boost::char_separator<char> separator(" ", ",");
    const Tokenizer tokens(line, separator);
    words.assign(tokens.begin(), tokens.end());
}

bool parseInt32(const std::string& word, int32_t& value) {
    int32_t parsed = 0;
    if (!boost::conversion::try_lexical_convert(word, parsed)) {
        return false;
    }
    value = parsed;
    return true;
}

}  // namespace sysctrlservice
