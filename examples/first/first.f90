! A first client in another language: the same work as first.c, in Fortran, whose C interoperability has all that a
! foreign-function interface needs: the record, word by word, and functions that clean the stack themselves.
!   first_fortran IN.bmp OUT.bmp
module zavo
  use, intrinsic :: iso_c_binding
  implicit none

  ! Bitmap records are 26 words of 32 bits; these are named, the rest is the library's.
  type, bind(c) :: bitmap_handle
    integer(c_int32_t) :: storage_handle = 0
    integer(c_int32_t) :: pixels = 0
    integer(c_int32_t) :: width = 0
    integer(c_int32_t) :: height = 0
    integer(c_int32_t) :: bits_per_pixel = 0
    integer(c_int32_t) :: others(21) = 0
  end type

  type, bind(c) :: rectangle
    integer(c_int32_t) :: left, top, right, bottom
  end type

  integer(c_int), parameter :: success = 1, optimised_palette = int(z'40'), copy_pixels = int(z'CC0020')

  interface
    function zv_change_from_dib(bitmap, dib) bind(c, name="Zv_ChangeFromDIB")
      import
!GCC$ ATTRIBUTES STDCALL :: zv_change_from_dib
      type(bitmap_handle), intent(inout) :: bitmap
      type(c_ptr), value :: dib
      integer(c_int) :: zv_change_from_dib
    end function

    function zv_resample_bitmap(bitmap, width, height) bind(c, name="Zv_ResampleBitmap")
      import
!GCC$ ATTRIBUTES STDCALL :: zv_resample_bitmap
      type(bitmap_handle), intent(inout) :: bitmap
      integer(c_int), value :: width, height
      integer(c_int) :: zv_resample_bitmap
    end function

    function zv_color_res_bitmap(source, destination, bits, options, colors, count) bind(c, name="Zv_ColorResBitmap")
      import
!GCC$ ATTRIBUTES STDCALL :: zv_color_res_bitmap
      type(bitmap_handle), intent(inout) :: source
      type(c_ptr), value :: destination, colors
      integer(c_int), value :: bits, options, count
      integer(c_int) :: zv_color_res_bitmap
    end function

    function zv_paint_dc(dc, bitmap, source, source_clip, destination, clip, rop) bind(c, name="Zv_PaintDC")
      import
!GCC$ ATTRIBUTES STDCALL :: zv_paint_dc
      type(c_ptr), value :: dc, source, source_clip, clip
      type(bitmap_handle), intent(inout) :: bitmap
      type(rectangle), intent(in) :: destination
      integer(c_int), value :: rop
      integer(c_int) :: zv_paint_dc
    end function

    function zv_change_to_dib(bitmap) bind(c, name="Zv_ChangeToDIB")
      import
!GCC$ ATTRIBUTES STDCALL :: zv_change_to_dib
      type(bitmap_handle), intent(inout) :: bitmap
      type(c_ptr) :: zv_change_to_dib
    end function

    function global_alloc(flags, bytes) bind(c, name="GlobalAlloc")
      import
!GCC$ ATTRIBUTES STDCALL :: global_alloc
      integer(c_int), value :: flags, bytes
      type(c_ptr) :: global_alloc
    end function

    function global_lock(memory) bind(c, name="GlobalLock")
      import
!GCC$ ATTRIBUTES STDCALL :: global_lock
      type(c_ptr), value :: memory
      type(c_ptr) :: global_lock
    end function

    function global_unlock(memory) bind(c, name="GlobalUnlock")
      import
!GCC$ ATTRIBUTES STDCALL :: global_unlock
      type(c_ptr), value :: memory
      integer(c_int) :: global_unlock
    end function

    function get_dc(window) bind(c, name="GetDC")
      import
!GCC$ ATTRIBUTES STDCALL :: get_dc
      type(c_ptr), value :: window
      type(c_ptr) :: get_dc
    end function

    function release_dc(window, dc) bind(c, name="ReleaseDC")
      import
!GCC$ ATTRIBUTES STDCALL :: release_dc
      type(c_ptr), value :: window, dc
      integer(c_int) :: release_dc
    end function
  end interface
end module

program first
  use zavo
  implicit none

  integer, parameter :: file_header_bytes = 14, moveable = 2
  character(len=260) :: input, output
  type(bitmap_handle) :: bitmap
  type(c_ptr) :: dib
  logical :: there

  call get_command_argument(1, input)
  call get_command_argument(2, output)
  inquire (file=trim(input), exist=there)
  if (command_argument_count() /= 2 .or. .not. there) error stop "usage: first_fortran IN.bmp OUT.bmp"

  call check(zv_change_from_dib(bitmap, read_dib(trim(input))), "loading")
  call check(zv_resample_bitmap(bitmap, bitmap%width / 2, bitmap%height / 2), "shrinking")
  call check(zv_color_res_bitmap(bitmap, c_null_ptr, 4, optimised_palette, c_null_ptr, 0), "dithering")
  call paint()
  dib = zv_change_to_dib(bitmap)
  call write_dib(trim(output), dib)

contains

  subroutine check(status, work)
    integer(c_int), intent(in) :: status
    character(len=*), intent(in) :: work
    if (status == success) return
    print *, work, " failed: ", status
    error stop
  end subroutine

  subroutine paint()
    type(c_ptr) :: screen
    type(rectangle) :: corner
    integer(c_int) :: ignored
    screen = get_dc(c_null_ptr)
    corner = rectangle(0, 0, bitmap%width, bitmap%height)
    call check(zv_paint_dc(screen, bitmap, c_null_ptr, c_null_ptr, corner, c_null_ptr, copy_pixels), "painting")
    ignored = release_dc(c_null_ptr, screen)
  end subroutine

  ! What follows the file header, in moveable global memory.
  function read_dib(name) result(memory)
    character(len=*), intent(in) :: name
    type(c_ptr) :: memory
    integer(c_int8_t), pointer :: bytes(:)
    integer :: length, unit
    integer(c_int) :: ignored
    open (newunit=unit, file=name, access="stream", form="unformatted", status="old", action="read")
    inquire (unit=unit, size=length)
    memory = global_alloc(moveable, length - file_header_bytes)
    call c_f_pointer(global_lock(memory), bytes, [length - file_header_bytes])
    read (unit, pos=file_header_bytes + 1) bytes
    ignored = global_unlock(memory)
    close (unit)
  end function

  subroutine write_dib(name, memory)
    character(len=*), intent(in) :: name
    type(c_ptr), intent(in) :: memory
    integer(c_int32_t), pointer :: header(:)
    integer(c_int8_t), pointer :: bytes(:)
    integer :: length, rows, unit
    call c_f_pointer(global_lock(memory), header, [10])
    rows = header(1) + 4 * header(9)
    length = rows + header(6)
    call c_f_pointer(global_lock(memory), bytes, [length])
    open (newunit=unit, file=name, access="stream", form="unformatted", status="replace")
    write (unit) "BM", int(file_header_bytes + length, c_int32_t), 0_c_int32_t, &
      int(file_header_bytes + rows, c_int32_t), bytes
    close (unit)
  end subroutine
end program
