/// @file
/// All of libQORSysTS.
#pragma once

#include "QORString.h"
#include "QORSysSession.h"
#include "QORSysSimpleHashTable.h"
#include "QORSysTSExport.h"
#include "QORSysTSUnicodeString.h"
#include "QORUnicodeString.h"
#include "VELString.h"
#include "VELSysCodePage.h"
#include "VELSysHashMapString.h"
#include "VELSysIConvTSWrap.h"
#include "VELSysNLSCore.h"
#include "VELSysStatus.h"
#include "VELSysUCAlgorithm.h"
