#include "design/hierarchical_id.h"

#include "archive/instantiate.h"

#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace corvath::utils {

namespace {

/// Far beyond any nesting of algorithms; a file that asks for more is damaged.
constexpr std::size_t kMaxLevels = 65536;

/// The 64-bit mixing step of MurmurHash2 (A. Appleby), as boost::hash_combine has used it.
std::uint64_t CombineHash(std::uint64_t seed, std::uint64_t number) {
  constexpr std::uint64_t kMultiplier = 0xc6a4a7935bd1e995;
  number *= kMultiplier;
  number ^= number >> 47;
  number *= kMultiplier;
  seed ^= number;
  seed *= kMultiplier;
  return seed + 0xe6546b64;
}

template <class T>
std::vector<T> Levels(const CHierachicalId<T>& id) {
  std::vector<T> levels;
  for (const CHierachicalId<T>* node = &id; node; node = node->GetNext())
    levels.push_back(node->GetValue());
  return levels;
}

}  // namespace

template <class T>
const CHierachicalId<T>& CHierachicalId<T>::Leaf() const {
  const CHierachicalId* node = this;
  while (node->next_) node = node->next_.get();
  return *node;
}

template <class T>
void CHierachicalId<T>::Append(T value) {
  CHierachicalId* node = this;
  while (node->next_) node = node->next_.get();
  node->next_ = std::make_unique<CHierachicalId>(value);
}

template <class T>
CHierachicalId<T> CHierachicalId<T>::Appended(T value) const {
  CHierachicalId copy(*this);
  copy.Append(value);
  return copy;
}

template <class T>
void CHierachicalId<T>::CopyTail(const CHierachicalId& other) {
  CHierachicalId* end = this;
  for (const CHierachicalId* node = other.next_.get(); node; node = node->next_.get()) {
    end->next_ = std::make_unique<CHierachicalId>(node->value_);
    end = end->next_.get();
  }
}

template <class T>
void CHierachicalId<T>::DropTail() noexcept {
  // Node by node: nested destructors of a long chain would exhaust the stack.
  while (next_) next_ = std::move(next_->next_);
}

template <class T>
template <class Archive>
void CHierachicalId<T>::save(Archive& ar, const unsigned int) const {
  const std::vector<T> vec = Levels(*this);
  ar << BOOST_SERIALIZATION_NVP(vec);
}

template <class T>
template <class Archive>
void CHierachicalId<T>::load(Archive& ar, const unsigned int) {
  std::vector<T> vec;
  ar >> BOOST_SERIALIZATION_NVP(vec);
  if (vec.empty() || vec.size() > kMaxLevels)
    throw std::runtime_error("The file holds a design id of " + std::to_string(vec.size()) +
                             " levels.");
  *this = CHierachicalId(vec.front());
  CHierachicalId* end = this;
  for (std::size_t i = 1; i < vec.size(); ++i) {
    end->next_ = std::make_unique<CHierachicalId>(vec[i]);
    end = end->next_.get();
  }
}

template <class T>
std::wostream& operator<<(std::wostream& stream, const CHierachicalId<T>& id) {
  stream << id.GetValue();
  for (const CHierachicalId<T>* node = id.GetNext(); node; node = node->GetNext())
    stream << L'.' << node->GetValue();
  return stream;
}

template <class T>
std::size_t hash_value(const CHierachicalId<T>& id) {
  if (!id.GetNext()) return CombineHash(0, id.GetValue());
  // The hash of a level takes in the hash of the levels below it, so the deepest comes first.
  const std::vector<T> levels = Levels(id);
  std::uint64_t hash = CombineHash(0, levels.back());
  for (std::size_t i = levels.size() - 1; i-- > 0;)
    hash = CombineHash(CombineHash(0, levels[i]), hash);
  return hash;
}

template class CHierachicalId<std::uint64_t>;
template std::wostream& operator<<(std::wostream&, const CHierachicalId<std::uint64_t>&);
template std::size_t hash_value(const CHierachicalId<std::uint64_t>&);

}  // namespace corvath::utils

ZEL_INSTANTIATE_LOAD_SAVE(corvath::utils::CHierachicalId<std::uint64_t>)
ZEL_EXPORT_IMPLEMENT(corvath::utils::CHierachicalId<std::uint64_t>)
