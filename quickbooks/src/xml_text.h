// Text as XML carries it.
#pragma once

#include <string>
#include <string_view>

namespace zorvat::quickbooks {

// `text` escaped for element content and attribute values alike: the five markup
// characters as entities, CR, LF and TAB as character references (so that neither
// line-end nor attribute normalisation changes them), and every byte that is not
// UTF-8 or character XML 1.0 cannot carry as U+FFFD.
std::string xml_escaped(std::string_view text);

// Checks what a parser would let through: that `xml` is UTF-8 made of characters
// XML 1.0 allows, and that every reference outside comments, processing
// instructions and CDATA sections is one of the five predefined entities or a
// character reference to an allowed character. Returns the problem ("byte 12:
// ...") or an empty text.
std::string xml_lexical_problem(std::string_view xml);

}  // namespace zorvat::quickbooks
