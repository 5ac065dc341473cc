#pragma once

#include "platform/editor_window.h"

#include <cstdint>

namespace rotika {

enum EditorControlId : std::int32_t {
    newButton = 2001,
    openButton = 2002,
    saveButton = 2003,
    saveAsButton = 2004,
    pathLabel = 2005,
    wheelList = 2006,
    wheelNameEdit = 2007,
    renameWheelButton = 2008,
    addWheelButton = 2009,
    removeWheelButton = 2010,
    fieldList = 2011,
    addFieldButton = 2012,
    editFieldButton = 2013,
    removeFieldButton = 2014,
    fieldNameEdit = 2015,
    fieldColorEdit = 2016,
    fieldDelayEdit = 2017,
    fieldIconEdit = 2018,
    chooseIconButton = 2019,
    fieldVoiceEdit = 2020,
    stepList = 2021,
    stepKeyEdit = 2022,
    stepKindList = 2023,
    stepValueEdit = 2024,
    addStepButton = 2025,
    replaceStepButton = 2026,
    removeStepButton = 2027,
    stepUpButton = 2028,
    stepDownButton = 2029,
    writeFieldButton = 2030,
    activateButton = 2031,
};

/// Creates all controls of the window and fills the list of step kinds.
void createEditorControls(WindowHandle window);

} // namespace rotika
