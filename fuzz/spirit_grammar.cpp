#define BOOST_SPIRIT_NO_TREE_NODE_COLLAPSING
#include "spirit_grammar.h"

#include <boost/spirit/include/classic_ast.hpp>
#include <boost/spirit/include/classic_chset.hpp>
#include <boost/spirit/include/classic_core.hpp>

#include <cstddef>
#include <string>

namespace fuzz {

namespace {

namespace classic = boost::spirit::classic;

constexpr int kString = 19;

struct Grammar : classic::grammar<Grammar> {
  template <class Scanner>
  struct definition {
    template <int id>
    using Rule = classic::rule<Scanner, classic::parser_context<>, classic::parser_tag<id>>;

    Rule<1> expression;
    Rule<2> constant;
    Rule<3> function;
    Rule<4> ident;
    Rule<5> parentheses;
    Rule<6> operand;
    Rule<7> unary;
    Rule<8> logical;
    Rule<9> comparison;
    Rule<10> sum;
    Rule<11> product;
    Rule<12> power;
    Rule<13> index;
    Rule<14> object;
    Rule<15> vector;
    Rule<16> slice;
    Rule<17> matrix;
    Rule<18> assign;
    Rule<kString> string;
    Rule<20> assign_macro;
    Rule<21> macro;
    Rule<22> if_;
    Rule<23> switch_;

    explicit definition(const Grammar&) {
      using namespace boost::spirit::classic;
      const auto name =
          (alpha_p | ch_p(L'_')) >> *(alnum_p | ch_p(L'_') | ch_p(L'\'') | ch_p(L'.'));
      const auto comma = discard_node_d[ch_p(L',')];
      const auto equals = discard_node_d[ch_p(L'=')];
      const auto colon = discard_node_d[ch_p(L':')];

      expression = assign_macro | assign | logical;
      constant = leaf_node_d[real_p];
      ident = leaf_node_d[name];
      object = leaf_node_d[name - as_lower_d[L"if"]];
      parentheses = inner_node_d[ch_p(L'(') >> logical >> ch_p(L')')];
      operand =
          parentheses | if_ | switch_ | matrix | vector | constant | macro | function | object;
      function =
          root_node_d[leaf_node_d[name]] >>
          inner_node_d[ch_p(L'(') >>
                       !((string | expression) >> *(comma >> (string | expression))) >> ch_p(L')')];
      unary = !root_node_d[ch_p(L'!') | ch_p(L'-')] >> power;
      logical = comparison >> *(root_node_d[str_p(L"&&") | str_p(L"||")] >> comparison);
      comparison = sum >> *(root_node_d[str_p(L"<=") | str_p(L">=") | str_p(L"<") | str_p(L">") |
                                        str_p(L"==") | str_p(L"!=")] >>
                            sum);
      sum = product >> *(root_node_d[ch_p(L'+') | ch_p(L'-')] >> product);
      product = unary >> *(root_node_d[ch_p(L'*') | ch_p(L'/') | ch_p(L'%')] >> unary);
      power = (slice | index) >> *(root_node_d[str_p(L"^") | str_p(L"**")] >> (slice | index));
      slice = operand >> inner_node_d[ch_p(L'[') >> !logical >> ch_p(L':') >> !logical >>
                                      !(ch_p(L':') >> !logical) >> ch_p(L']')];
      index = operand >> !inner_node_d[ch_p(L'[') >> ((logical >> !ch_p(L',') >> !logical) |
                                                      (ch_p(L',') >> !logical)) >>
                                       ch_p(L']')];
      vector = inner_node_d[ch_p(L'[') >> !vector >> expression >>
                            *(comma >> !vector >> expression) >> ch_p(L']')];
      matrix = inner_node_d[ch_p(L'[') >> !matrix >> vector >> *(comma >> !matrix >> vector) >>
                            ch_p(L']')];
      assign = object >> equals >> *(object >> equals) >> expression;
      string = ch_p(L'"') >> leaf_node_d[+~ch_p(L'"')] >> ch_p(L'"');
      assign_macro = discard_node_d[ch_p(L'$')] >> ident >>
                     inner_node_d[ch_p(L'(') >> !(ident >> *(comma >> ident)) >> ch_p(L')')] >>
                     ch_p(L'=') >> expression;
      macro = discard_node_d[ch_p(L'$')] >> ident >>
              inner_node_d[ch_p(L'(') >> !(string | (expression >> *(comma >> expression))) >>
                           ch_p(L')')];
      if_ = discard_node_d[as_lower_d[L"#if"]] >> logical >>
            (discard_node_d[as_lower_d[L"#then"]] | colon) >> logical >>
            discard_node_d[as_lower_d[L"#else"]] >> logical;
      switch_ = discard_node_d[as_lower_d[L"#switch"]] >> logical >> !colon >>
                +(discard_node_d[as_lower_d[L"#case"]] >> logical >> colon >> logical) >>
                as_lower_d[L"#default"] >> !colon >> logical;
    }

    const Rule<1>& start() const { return expression; }
  };
};

using Factory = classic::node_iter_data_factory<classic::nil_t>;
using Node = classic::tree_match<const wchar_t*, Factory>::node_t;

void Print(const Node& node, long around, std::string& out) {
  const auto id = static_cast<long>(node.value.id().to_long());
  const long rule = id == 0 ? around : id;
  out += std::to_string(rule) + '\'';
  for (auto c = node.value.begin(); c != node.value.end(); ++c)
    out += std::to_string(static_cast<long>(*c)) + ' ';
  out += '\'';
  if (node.children.empty()) return;
  out += '(';
  // The quotation marks of a string are nodes of their own here, between which its text stands.
  const std::ptrdiff_t margin = rule == kString ? 1 : 0;
  for (auto child = node.children.begin() + margin; child != node.children.end() - margin; ++child)
    Print(*child, rule, out);
  out += ')';
}

}  // namespace

Parsed ParseWithSpirit(std::wstring_view text) {
  static const Grammar grammar;
  const wchar_t* const first = text.data();
  const auto info =
      classic::ast_parse<Factory>(first, first + text.size(), grammar, classic::nothing_p);
  Parsed result;
  result.match = info.match;
  result.stop = static_cast<std::size_t>(info.stop - first);
  if (info.match) Print(info.trees.front(), 0, result.tree);
  return result;
}

}  // namespace fuzz
