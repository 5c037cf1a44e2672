#include "calculator/number_table_grammar.h"

#include <boost/spirit/include/qi.hpp>

namespace support {

std::vector<std::vector<double>> ReadTableWithSpirit(const std::string& text) {
  namespace qi = boost::spirit::qi;
  using Iterator = std::string::const_iterator;
  using qi::blank;
  using qi::char_;
  using qi::double_;
  using qi::eol;
  using qi::omit;

  const auto line_end = boost::proto::deep_copy(eol | qi::eoi);
  const qi::rule<Iterator> visible =
      blank | (char_ - char_('\x01', '\x1f') - char_('\0', '\x1f') - char_('\x7f'));
  const qi::rule<Iterator> separator = +(visible - double_);
  const qi::rule<Iterator, std::vector<double>()> row =
      omit[*blank] >> (double_ % separator) >> omit[*(char_ - eol)] >> omit[line_end];
  const qi::rule<Iterator> other_line = *(char_ - eol) >> eol;

  Iterator at = text.begin();
  std::vector<std::vector<double>> rows(1);
  while (!qi::parse(at, text.end(), row, rows.back())) {
    rows.back().clear();
    if (!qi::parse(at, text.end(), other_line)) return {};
  }
  while (at != text.end()) {
    std::vector<double> next;
    if (!qi::parse(at, text.end(), row, next) || next.size() != rows.front().size()) break;
    rows.push_back(std::move(next));
  }
  return rows;
}

}  // namespace support
