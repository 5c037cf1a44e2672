#include "archive/instantiate.h"
#include "doe/doe.h"
#include "foundation/text_stream.h"

#include <algorithm>
#include <locale>
#include <sstream>
#include <string>

namespace corvath::math {

template <class Archive>
void DOE::save(Archive& ar, unsigned int /*version*/) const {
  utils::TextStream text;
  text << generator_;
  const std::string saved_generator = text.str();
  ar& BOOST_SERIALIZATION_NVP(numdimensions_);
  ar& BOOST_SERIALIZATION_NVP(designs_);
  ar& BOOST_SERIALIZATION_NVP(saved_generator);
}

template <class Archive>
void DOE::load(Archive& ar, unsigned int /*version*/) {
  using boost::archive::archive_exception;
  std::string saved_generator;
  ar& BOOST_SERIALIZATION_NVP(numdimensions_);
  ar& BOOST_SERIALIZATION_NVP(designs_);
  ar& BOOST_SERIALIZATION_NVP(saved_generator);
  state_lists_.clear();
  // A blank after the last number: the engine looks for one, and at the end would find a failure.
  std::istringstream text(saved_generator + ' ');
  text.imbue(std::locale::classic());
  boost::random::mt19937 generator;
  text >> generator;
  const bool whole = std::all_of(designs_.begin(), designs_.end(), [this](const auto& design) {
    return design.size() == numdimensions_;
  });
  if (!text || !whole) throw archive_exception(archive_exception::input_stream_error);
  generator_ = generator;
}

}  // namespace corvath::math

ZEL_EXPORT_IMPLEMENT(corvath::math::DOE)
ZEL_INSTANTIATE_LOAD_SAVE(corvath::math::DOE)
