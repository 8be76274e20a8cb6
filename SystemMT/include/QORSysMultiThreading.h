/// @file
/// All of libQORSysMultiThreading.
#pragma once

#include "QORMutex.h"
#include "QORResourceLock.h"
#include "QORSocketConnector.h"
#include "QORSockets.h"
#include "QORSysMTExport.h"
#include "QORThrLibraryManager.h"
#include "VELDebugBreak.h"
#include "VELSysConsumer.h"
#include "VELSysContext.h"
#include "VELSysHashTable.h"
#include "VELSysLifeCycle.h"
#include "VELSysList.h"
#include "VELSysProducer.h"
#include "VELSysRingBuffer.h"
#include "VELSysThread.h"
#include "VELSysTimer.h"
#include "VELSysTSDataQueue.h"
#include "VELSysTSVector.h"
