// SPDX-License-Identifier: MIT
#ifndef TOOLS_MODEL_JSON_H_
#define TOOLS_MODEL_JSON_H_

#include "tools/json_text.h"
#include "tools/model_file.h"

namespace cli {

/// All that a trained model holds but the stored patterns themselves, of which it tells the number.
/// Equal models
/// give equal JSON. Throws what the library throws for a model that damage has robbed of a part.
Json modelJson(const Model& model);

/// Measurements and categories: the name, or the index where there is no name.
Json measurementJson(const Names& names, long index);
Json categoryJson(const Names& names, long label);

}  // namespace cli

#endif  // TOOLS_MODEL_JSON_H_
