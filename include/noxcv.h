/**
 * @file noxcv.h
 * All of the image library: include this, link with -lnoxcva6 -lnoxcore.
 */
#ifndef NOXCV_H
#define NOXCV_H

#include "noxcore.h"
#include "noxcv/accumulate.h"
#include "noxcv/corners.h"
#include "noxcv/detection.h"
#include "noxcv/distance.h"
#include "noxcv/edges.h"
#include "noxcv/filter.h"
#include "noxcv/frame.h"
#include "noxcv/inpaint.h"
#include "noxcv/lines.h"
#include "noxcv/morphology.h"
#include "noxcv/motion.h"
#include "noxcv/opticalflow.h"
#include "noxcv/primitives.h"
#include "noxcv/pyramid.h"
#include "noxcv/sampling.h"
#include "noxcv/segmentation.h"
#include "noxcv/statistics.h"
#include "noxstatus.h"
#include "noxtypes.h"

#endif
