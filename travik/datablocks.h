#pragma once

/// Everything public of the data block library.
#include <travik/datablock/AnalogOutputCalibration.h>
#include <travik/datablock/End.h>
#include <travik/datablock/ErrorDefinitions.h>
#include <travik/datablock/Fields.h>
#include <travik/datablock/HwDatablock.h>
#include <travik/datablock/Ident.h>
#include <travik/datablock/ModuleTypes.h>
#include <travik/platform/Debug.h>
#include <travik/platform/ErrorManager.h>
#include <travik/registry/Catalogue.h>
#include <travik/registry/Interpreter.h>
#include <travik/registry/ModuleImage.h>
#include <travik/registry/text/TableTemplates.h>
#include <travik/registry/text/TextLayout.h>
#include <travik/tables/ElementTypes.h>
#include <travik/tables/SecondEdition.h>
#include <travik/tables/SecondEditionBuilder.h>
