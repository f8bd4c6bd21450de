# SPDX-License-Identifier: Apache-2.0
"""Pictures, depth maps, point clouds and poses of a stereo camera.

Lengths are in the unit that the data came in: nothing is converted unless asked. Functions return values and
raise: vela.Error, with `code`, for what the library refuses; OSError for files; TypeError, ValueError and
BufferError for arguments.
"""

from ._core import (
    BODY_BONES as BODY_BONES,
    BODY_BONES_POSE_34 as BODY_BONES_POSE_34,
    BODY_FORMAT as BODY_FORMAT,
    BODY_PARTS as BODY_PARTS,
    BODY_PARTS_POSE_34 as BODY_PARTS_POSE_34,
    CAMERA_MOTION_STATE as CAMERA_MOTION_STATE,
    CAMERA_STATE as CAMERA_STATE,
    COORDINATE_SYSTEM as COORDINATE_SYSTEM,
    COPY_TYPE as COPY_TYPE,
    DETECTION_MODEL as DETECTION_MODEL,
    ERROR_CODE as ERROR_CODE,
    HEADING_STATE as HEADING_STATE,
    INPUT_TYPE as INPUT_TYPE,
    MAT_TYPE as MAT_TYPE,
    MEM as MEM,
    MODEL as MODEL,
    OBJECT_ACTION_STATE as OBJECT_ACTION_STATE,
    OBJECT_CLASS as OBJECT_CLASS,
    OBJECT_FILTERING_MODE as OBJECT_FILTERING_MODE,
    OBJECT_SUBCLASS as OBJECT_SUBCLASS,
    OBJECT_TRACKING_STATE as OBJECT_TRACKING_STATE,
    SENSOR_LOCATION as SENSOR_LOCATION,
    SENSOR_TYPE as SENSOR_TYPE,
    SENSORS_UNIT as SENSORS_UNIT,
    UNIT as UNIT,
    CalibrationParameters as CalibrationParameters,
    CameraParameters as CameraParameters,
    CustomBoxObjectData as CustomBoxObjectData,
    DeviceProperties as DeviceProperties,
    DeviceView as DeviceView,
    InputType as InputType,
    Mat as Mat,
    Matrix3f as Matrix3f,
    Matrix4f as Matrix4f,
    ObjectData as ObjectData,
    Orientation as Orientation,
    Pose as Pose,
    Resolution as Resolution,
    Rotation as Rotation,
    SensorParameters as SensorParameters,
    SensorsConfiguration as SensorsConfiguration,
    SensorsData as SensorsData,
    StreamingProperties as StreamingProperties,
    Transform as Transform,
    Translation as Translation,
    backend as backend,
    compute_rotation_matrix_from_gravity as compute_rotation_matrix_from_gravity,
    generate_unique_id as generate_unique_id,
    get_coordinate_transform_conversion4f as get_coordinate_transform_conversion4f,
    get_object_class as get_object_class,
    get_object_sub_classes as get_object_sub_classes,
    get_unit_scale as get_unit_scale,
    has_gpu as has_gpu,
    to_string as to_string,
    to_verbose as to_verbose,
    version as __version__,
)
from . import io as io
from ._errors import Error as Error
from ._records import Objects as Objects
