// SPDX-License-Identifier: Apache-2.0
#include "kalproject.h"

#include "kalmessages.h"

kalproject* kalproject::m_inst = nullptr;

kalproject* kalproject::getInstance() {
    if (!m_inst) m_inst = new kalproject();
    return m_inst;
}

void kalproject::destoryInstance() {
    if (!m_inst) return;
    delete m_inst;
    m_inst = nullptr;
}

// Words 3 and 4 and the middle flag are the client's to set; they start zeroed
// so that nothing reads indeterminate memory.
kalproject::kalproject()
    : projectWord1(nullptr),
      messageQueue(new kalmessages()),
      projectWord2(nullptr),
      projectWord3(nullptr),
      projectWord4(nullptr),
      projectFlag1(false),
      projectFlag2(false),
      projectFlag3(false) {}

kalproject::~kalproject() {
    // The queue goes first; the members then unwind in reverse declaration order.
    delete messageQueue;
    messageQueue = nullptr;
}
