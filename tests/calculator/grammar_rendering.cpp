// The grammar of expression texts as a table of Boost.Spirit Classic rules, a second method to
// parse them with. A unit of its own, since Spirit takes long to compile.
#define BOOST_SPIRIT_NO_TREE_NODE_COLLAPSING
#include "calculator/grammar_rendering.h"

#include <boost/spirit/include/classic_ast.hpp>
#include <boost/spirit/include/classic_chset.hpp>
#include <boost/spirit/include/classic_core.hpp>

namespace support {
namespace {

namespace sp = boost::spirit::classic;

/// What stands in a pair of brackets; of nothing one empty node, with the id of the rule around it
/// so that the concatenation keeps it.
template <int Id>
struct BracketsOp {
  template <class Match>
  void operator()(Match& match) const {
    const auto inner = (++match.trees.begin())->value.begin();
    const bool empty = match.trees.size() == 2;
    sp::inner_node_op()(match);
    if (!empty) return;
    match.trees.begin()->value = typename Match::parse_node_t(inner, inner);
    match.trees.begin()->value.id(Id);
  }
};
template <int Id>
const sp::node_parser_gen<BracketsOp<Id>> brackets_d = sp::node_parser_gen<BracketsOp<Id>>();

template <class Scanner>
struct Grammar {
  template <int Id>
  using Rule = sp::rule<Scanner, sp::parser_context<>, sp::parser_tag<Id>>;

  Grammar() {
    using sp::as_lower_d;
    using sp::ch_p;
    using sp::discard_node_d;
    using sp::inner_node_d;
    using sp::leaf_node_d;
    using sp::root_node_d;
    using sp::str_p;
    // leaf_node_d makes its own node, so the name may consist of many character parsers.
#define NAME \
  ((sp::alpha_p | L'_') >> *(sp::alpha_p | sp::digit_p | ch_p(L'_') | ch_p(L'\'') | ch_p(L'.')))
    expression = assign_macro | assign | g0;
    constant = leaf_node_d[sp::real_p];
    function =
        root_node_d[leaf_node_d[NAME]] >>
        brackets_d<3>[ch_p(L'(') >> !((string | expression) >>
                                      *(discard_node_d[ch_p(L',')] >> (string | expression))) >>
                      ch_p(L')')];
    ident = leaf_node_d[NAME];
    parentheses = inner_node_d[ch_p(L'(') >> g0 >> ch_p(L')')];
    operand = parentheses | if_ | switch_ | matrix | vector | constant | macro | function | object;
    unary = !(root_node_d[ch_p(L'!')] | root_node_d[ch_p(L'-')]) >> g4;
    g0 = g1 >> *((root_node_d[str_p(L"&&")] | root_node_d[str_p(L"||")]) >> g1);
    g1 =
        g2 >> *((root_node_d[str_p(L"<=")] | root_node_d[str_p(L">=")] | root_node_d[ch_p(L'<')] |
                 root_node_d[ch_p(L'>')] | root_node_d[str_p(L"==")] | root_node_d[str_p(L"!=")]) >>
                g2);
    g2 = g3 >> *((root_node_d[ch_p(L'+')] | root_node_d[ch_p(L'-')]) >> g3);
    g3 = unary >>
         *((root_node_d[ch_p(L'*')] | root_node_d[ch_p(L'/')] | root_node_d[ch_p(L'%')]) >> unary);
    g4 = (slice | idx_object) >>
         *((root_node_d[ch_p(L'^')] | root_node_d[str_p(L"**")]) >> (slice | idx_object));
    idx_object =
        operand >>
        !inner_node_d[ch_p(L'[') >> ((!g0 >> !ch_p(L',') >> !g0) - ch_p(L']')) >> ch_p(L']')];
    object = leaf_node_d[NAME] - as_lower_d[str_p(L"if")];
    vector = inner_node_d[ch_p(L'[') >> (!vector >> expression) >>
                          *(discard_node_d[ch_p(L',')] >> (!vector >> expression)) >> ch_p(L']')];
    slice =
        operand >>
        inner_node_d[ch_p(L'[') >> !g0 >> ch_p(L':') >> !g0 >> !(ch_p(L':') >> !g0) >> ch_p(L']')];
    matrix = inner_node_d[ch_p(L'[') >> (!matrix >> vector) >>
                          *(discard_node_d[ch_p(L',')] >> (!matrix >> vector)) >> ch_p(L']')];
    assign = object >> discard_node_d[ch_p(L'=')] >> *(object >> discard_node_d[ch_p(L'=')]) >>
             expression;
    string = inner_node_d[ch_p(L'"') >> string_text >> ch_p(L'"')];
    string_text = leaf_node_d[+(~ch_p(L'"'))];
    assign_macro =
        discard_node_d[ch_p(L'$')] >> ident >>
        brackets_d<20>[ch_p(L'(') >> !(ident >> *(discard_node_d[ch_p(L',')] >> ident)) >>
                       ch_p(L')')] >>
        ch_p(L'=') >> expression;
    macro =
        discard_node_d[ch_p(L'$')] >> ident >>
        brackets_d<21>[ch_p(L'(') >>
                       !(string | (expression >> *(discard_node_d[ch_p(L',')] >> expression))) >>
                       ch_p(L')')];
    if_ = discard_node_d[as_lower_d[str_p(L"#if")]] >> g0 >>
          discard_node_d[as_lower_d[str_p(L"#then")] | ch_p(L':')] >> g0 >>
          discard_node_d[as_lower_d[str_p(L"#else")]] >> g0;
    switch_ =
        discard_node_d[as_lower_d[str_p(L"#switch")]] >> g0 >> !discard_node_d[ch_p(L':')] >>
        +(discard_node_d[as_lower_d[str_p(L"#case")]] >> g0 >> discard_node_d[ch_p(L':')] >> g0) >>
        as_lower_d[str_p(L"#default")] >> !discard_node_d[ch_p(L':')] >> g0;
#undef NAME
  }
  Rule<1> expression;
  Rule<2> constant;
  Rule<3> function;
  Rule<4> ident;
  Rule<5> parentheses;
  Rule<6> operand;
  Rule<7> unary;
  Rule<8> g0;
  Rule<9> g1;
  Rule<10> g2;
  Rule<11> g3;
  Rule<12> g4;
  Rule<13> idx_object;
  Rule<14> object;
  Rule<15> vector;
  Rule<16> slice;
  Rule<17> matrix;
  Rule<18> assign;
  Rule<19> string;
  Rule<19> string_text;
  Rule<20> assign_macro;
  Rule<21> macro;
  Rule<22> if_;
  Rule<23> switch_;
};

/// Spirit leaves the id 0 to tokens that stand among other children: they count with their parent.
template <class Tree>
void Print(const Tree& node, long parent, const wchar_t* text, std::string& out) {
  const long id = node.value.id().to_long() != 0 ? node.value.id().to_long() : parent;
  out += std::to_string(id) + ':' + std::to_string(node.value.begin() - text) + '-' +
         std::to_string(node.value.end() - text);
  if (node.children.empty()) return;
  out += '(';
  for (const auto& child : node.children) {
    if (out.back() != '(') out += ' ';
    Print(child, id, text, out);
  }
  out += ')';
}

}  // namespace

Rendering RenderWithSpirit(const std::wstring& text) {
  using Iterator = const wchar_t*;
  using Factory = sp::node_iter_data_factory<int>;
  using MatchPolicy = sp::ast_match_policy<Iterator, Factory>;
  using Scanner = sp::scanner<Iterator, sp::scanner_policies<sp::iteration_policy, MatchPolicy>>;
  static const Grammar<Scanner> grammar;
  const Iterator begin = text.data();
  Iterator first = begin;
  const Scanner scanner(first, begin + text.size());
  const sp::tree_match<Iterator, Factory> hit = grammar.expression.parse(scanner);
  Rendering result{static_cast<std::size_t>(first - begin), static_cast<bool>(hit), false, ""};
  result.full = hit && result.stop == text.size();
  if (hit) Print(hit.trees.front(), 0, begin, result.tree);
  return result;
}

}  // namespace support
