#pragma once

#include <boost/serialization/level.hpp>
#include <boost/uuid/uuid.hpp>

/// A uuid is its 16 bytes, read and written as one block.
BOOST_CLASS_IMPLEMENTATION(boost::uuids::uuid, boost::serialization::primitive_type)
