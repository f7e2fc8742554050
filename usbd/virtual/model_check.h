// What must fit together in a model, beyond the range of each field.
#pragma once

#include "model.h"

namespace tavra::usbd {

class Complaint;

void checkModel(const Model& model, Complaint& complaint);

}  // namespace tavra::usbd
