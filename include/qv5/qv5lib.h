/// @file qv5lib.h
/// QV5lib: surveying and road-design computations. Including this header gives the whole
/// programming interface.
#ifndef QV5_QV5LIB_H
#define QV5_QV5LIB_H

#include "qv5/export.h"
#include "qv5/geo7ptrans.h"
#include "qv5/geoadjust.h"
#include "qv5/geoarc.h"
#include "qv5/geoarray.h"
#include "qv5/geodef.h"
#include "qv5/geoellipsoid.h"
#include "qv5/geoline.h"
#include "qv5/geomatrix.h"
#include "qv5/geopoint.h"
#include "qv5/georoad.h"
#include "qv5/georoadfile.h"
#include "qv5/georoaditer.h"
#include "qv5/geosection.h"
#include "qv5/geospiral.h"
#include "qv5/geostereo.h"
#include "qv5/geosurvey.h"
#include "qv5/geotemplate.h"
#include "qv5/geotrans.h"
#include "qv5/geovert.h"
#include "qv5/hostfw.h"
#include "qv5/logfile.h"
#include "qv5/settings.h"
#include "qv5/sitewnd.h"
#include "qv5/units.h"

#endif // QV5_QV5LIB_H
