// Linked lists, queues, stacks and iterators.
#ifndef RL132_CONTAINERS_VLIST_H
#define RL132_CONTAINERS_VLIST_H
#include "rl132/core/rldefs.h"

#endif
