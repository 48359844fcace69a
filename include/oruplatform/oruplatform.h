/*
 * The platform layer: all of its headers. liboruapi calls these operations and does not contain
 * them; a product may bring a library of its own with the same names.
 */
#ifndef ORUPLATFORM_ORUPLATFORM_H
#define ORUPLATFORM_ORUPLATFORM_H

#include <oruplatform/balanced_tree.h>
#include <oruplatform/chunk.h>
#include <oruplatform/fifo.h>
#include <oruplatform/halden.h>
#include <oruplatform/hash.h>
#include <oruplatform/poolheap.h>
#include <oruplatform/tracelet.h>

#endif
