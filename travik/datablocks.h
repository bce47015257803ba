#pragma once

/// Everything public of the data block library.
#include <travik/datablock/AnalogOutputCalibration.h>
#include <travik/datablock/End.h>
#include <travik/datablock/ErrorDefinitions.h>
#include <travik/datablock/Fields.h>
#include <travik/datablock/HwDatablock.h>
#include <travik/datablock/Ident.h>
#include <travik/datablock/ModuleTypes.h>
#include <travik/modules/IqModulatorTables.h>
#include <travik/modules/IqModulatorTablesV20.h>
#include <travik/modules/IqOp6Tables.h>
#include <travik/modules/MicrowaveTables.h>
#include <travik/modules/OutputUnit.h>
#include <travik/modules/ReferenceOscillators.h>
#include <travik/modules/StepAttenuators.h>
#include <travik/platform/Debug.h>
#include <travik/platform/ErrorManager.h>
#include <travik/registry/Catalogue.h>
#include <travik/registry/Interpreter.h>
#include <travik/registry/ModuleImage.h>
#include <travik/registry/text/TableTemplates.h>
#include <travik/registry/text/TextLayout.h>
