! The unit routines of both families mixed at random with READ, WRITE, INQUIRE, BACKSPACE, REWIND and CLOSE, over files of
! every access and form, against a model of the file's bytes. The seeds are fixed; a failure tells its sequence.
program units_mixed
  use, intrinsic :: iso_fortran_env, only: int64
  use checks, only: check, finish
  use scratch, only: remove_directory, scratch_directory
  use qxport, only: fgetc, flush, flushqq, fputc, fseek, fseeki8, ftell, ftelli8, getpos, getposi8, ierrno
  use qxport, only: pxffdopen, pxffflush, pxffgetc, pxffileno, pxffputc, pxffseek, pxfftell
  implicit none
  integer, parameter :: ebadf = 9, einval = 22, eend = -1, most = 40000, steps = 30, sequences = 5000
  integer, parameter :: text_file = 1, scratch_file = 2, text_stream = 3, byte_stream = 4, text_direct = 5
  integer, parameter :: byte_direct = 6, record_file = 7, kinds = 7, record_length = 10
  character, parameter :: newline = achar(10)

  ! What the unit should be: its bytes, its position, and what the run-time remembers of the last statements.
  character(most) :: bytes
  integer :: size, place
  logical :: behind_end, began_record, writing

  integer :: kind, unit, sequence, failed_sequences
  character(9) :: action
  character(:), allocatable :: directory, path
  character(40) :: steps_taken(0:steps)
  integer :: taken
  logical :: wrong
  integer(int64) :: state

  directory = scratch_directory()
  path = directory // '/file'
  failed_sequences = 0
  do sequence = 1, sequences
    call run_sequence()
    call check(.not. wrong, 'a sequence')
    if (wrong) failed_sequences = failed_sequences + 1
    if (failed_sequences == 5) exit
  end do
  call remove_directory(directory)
  deallocate (directory, path)
  call finish()

contains

  ! 0 to below - 1, from a generator of the test's own: the same on every machine.
  integer function random(below)
    integer, intent(in) :: below
    state = mod(state * 48271_int64, 2147483647_int64)
    random = int(mod(state / 8, int(below, int64)))
  end function

  function random_text(length) result(text)
    integer, intent(in) :: length
    character(length) :: text
    integer :: i
    do i = 1, length
      text(i:i) = achar(iachar('a') + random(26))
    end do
  end function

  subroutine run_sequence()
    integer :: i
    state = 1000003_int64 * sequence + 17
    kind = random(11)
    kind = random(kinds) + 1
    unit = 20 + random(3)
    wrong = .false.
    taken = 0
    call make_file()
    call open_unit()
    do i = 1, steps
      if (wrong) exit
      call take_step()
    end do
    if (.not. wrong) call close_unit()
    if (wrong) then
      close (unit)
      print '(a, i0, a, i0, 3a)', 'sequence ', sequence, ', kind ', kind, ', ', trim(action), ':'
      print '(4x, a)', steps_taken(:taken)
    end if
  end subroutine

  subroutine make_file()
    integer :: i, lines, longest, other
    logical :: unfinished
    size = 0
    place = 0
    lines = random(8)
    longest = merge(130, 12, random(3) == 0)
    if (random(40) == 0) lines = 250
    do i = 1, lines
      if (kind == record_file) then
        call append_record(random_text(1 + random(longest)))
      else
        call append(random_text(random(longest)) // newline)
      end if
    end do
    unfinished = random(4) == 0
    if (unfinished .and. kind /= record_file) call append(random_text(3))
    if (kind == scratch_file) return
    open (newunit=other, file=path, status='replace', access='stream', form='unformatted')
    write (other) bytes(:size)
    close (other)
  end subroutine

  subroutine append(text)
    character(*), intent(in) :: text
    bytes(size + 1:size + len(text)) = text
    size = size + len(text)
  end subroutine

  subroutine append_record(text)
    character(*), intent(in) :: text
    character(4) :: marker
    marker = transfer(len(text), marker)
    call append(marker // text // marker)
  end subroutine

  subroutine open_unit()
    character(9), parameter :: actions(0:5) = [character(9) :: 'read', 'write', 'readwrite', 'readwrite', 'readwrite', &
      'readwrite']
    action = actions(random(6))
    if (kind == scratch_file) action = 'readwrite'
    place = 0
    behind_end = .false.
    began_record = .false.
    writing = .false.
    steps_taken(0) = 'open'
    select case (kind)
    case (text_file)
      open (unit, file=path, status='old', action=action)
    case (scratch_file)
      open (unit, status='scratch')
      size = 0
    case (text_stream)
      open (unit, file=path, status='old', action=action, access='stream', form='formatted')
    case (byte_stream)
      open (unit, file=path, status='old', action=action, access='stream', form='unformatted')
    case (text_direct)
      open (unit, file=path, status='old', action=action, access='direct', form='formatted', recl=record_length)
    case (byte_direct)
      open (unit, file=path, status='old', action=action, access='direct', form='unformatted', recl=record_length)
    case (record_file)
      open (unit, file=path, status='old', action=action, form='unformatted')
    end select
  end subroutine

  logical function readable()
    readable = action /= 'write'
  end function

  logical function writable()
    writable = action /= 'read'
  end function

  ! The steps are tried in the order of their numbers until one of them makes sense where the unit stands.
  subroutine take_step()
    taken = taken + 1
    steps_taken(taken) = '(nothing)'
    select case (random(20))
    case (0:4)
      call get_characters(1 + random(3))
    case (5:7)
      call put_characters(1 + random(3))
    case (8:9)
      call seek()
    case (10:12)
      if (readable()) call read_something()
    case (13:15)
      if (writable()) call write_something()
    case (16)
      if (readable()) call go_back()
    case (17)
      call go_to_the_beginning()
    case (18)
      call flush_it()
    case (19)
      call ask()
    end select
    call check_position()
  end subroutine

  subroutine note(what, number)
    character(*), intent(in) :: what
    integer, intent(in) :: number
    write (steps_taken(taken), '(a, 1x, i0)') what, number
  end subroutine

  subroutine expect(right, what, got, expected)
    logical, intent(in) :: right
    character(*), intent(in) :: what
    integer, intent(in) :: got, expected
    if (right .or. wrong) return
    wrong = .true.
    print '(2a, 2(a, i0))', 'WRONG: ', what, ': got ', got, ', expected ', expected
  end subroutine

  subroutine expect_number(got, expected, what)
    integer, intent(in) :: got, expected
    character(*), intent(in) :: what
    call expect(got == expected, what, got, expected)
  end subroutine

  subroutine check_position()
    integer(4) :: offset, ierror
    integer(int64) :: pos
    if (kind == text_stream .or. kind == byte_stream) then
      inquire (unit, pos=pos)
      call expect_number(int(pos), place + 1, 'INQUIRE (POS=)')
    end if
    select case (random(15))
    case (0)
      call pxfftell(unit, offset, ierror)
      call expect_number(ierror, 0, 'IERROR of pxfftell')
      call expect_number(offset, place, 'pxfftell')
    case (1)
      call expect_number(ftell(unit), place, 'ftell')
    case (2)
      call expect_number(int(ftelli8(unit)), place, 'ftelli8')
    case (3)
      call expect_number(getpos(unit), place, 'getpos')
    case (4)
      call expect_number(int(getposi8(unit)), place, 'getposi8')
    end select
  end subroutine

  ! Each character by a routine of either family.
  subroutine get_characters(count)
    integer, intent(in) :: count
    integer(4) :: ierror, refusal
    integer :: i
    character :: next
    call note('get characters', count)
    do i = 1, count
      next = '#'
      if (random(2) == 0) then
        call pxffgetc(unit, next, ierror)
        refusal = -ebadf
      else
        ierror = fgetc(unit, next)
        refusal = einval
      end if
      if (.not. readable()) then
        call expect_number(ierror, refusal, 'a character of a unit for writing')
        call expect_number(iachar(next), iachar('#'), 'its character')
      else if (place < size) then
        place = place + 1
        call expect_number(ierror, 0, 'the answer to a character read')
        call expect_number(iachar(next), iachar(bytes(place:place)), 'the character')
        writing = .false.
      else
        call expect_number(ierror, eend, 'the answer at the end')
        call expect_number(iachar(next), iachar('#'), 'its character')
        began_record = .false.
        writing = .false.
      end if
    end do
  end subroutine

  subroutine put_characters(count)
    integer, intent(in) :: count
    integer(4) :: ierror, refusal
    integer :: i
    character :: next
    call note('put characters', count)
    do i = 1, count
      next = achar(iachar('A') + random(26))
      if (random(5) == 0) next = newline
      if (random(2) == 0) then
        call pxffputc(unit, next, ierror)
        refusal = -ebadf
      else
        ierror = fputc(unit, next)
        refusal = einval
      end if
      if (.not. writable()) then
        call expect_number(ierror, refusal, 'a character for a unit for reading')
      else
        call expect_number(ierror, 0, 'the answer to a character written')
        call put(next)
        writing = .true.
        if (kind == text_stream) began_record = .false.
      end if
    end do
  end subroutine

  ! What lies between the end of the file and the position are zeros.
  subroutine put(text)
    character(*), intent(in) :: text
    if (place > size) bytes(size + 1:place) = repeat(achar(0), place - size)
    bytes(place + 1:place + len(text)) = text
    place = place + len(text)
    size = max(size, place)
  end subroutine

  subroutine seek()
    integer :: whence, offset, origin, target
    integer(4) :: ierror, refusal
    whence = random(4)
    origin = 0
    if (whence == 1) origin = place
    if (whence == 2) origin = size
    target = random(size + 1)
    select case (random(12))
    case (0)
      target = size + random(20)
    case (1)
      target = -1 - random(20)
    case (2:3)
      target = size
    case (4)
      target = 0
    end select
    offset = target - origin
    call note('seek to', target)
    refusal = -einval
    select case (random(4))
    case (0, 1)
      call pxffseek(unit, offset, whence, ierror)
      refusal = einval
    case (2)
      ierror = fseek(unit, offset, whence)
      call expect_number(ierrno(), ierror, 'what ierrno tells of fseek')
    case (3)
      ierror = fseeki8(unit, int(offset, int64), whence)
      call expect_number(ierrno(), ierror, 'what ierrno tells of fseeki8')
    end select
    if (target < 0 .or. whence == 3) then
      call expect_number(ierror, refusal, 'the answer to a seek that is refused')
      return
    end if
    call expect_number(ierror, 0, 'the answer to a seek')
    place = target
    behind_end = .false.
    began_record = .false.
    writing = .false.
  end subroutine

  subroutine read_something()
    character(2000) :: line
    character(:), allocatable :: expected
    integer :: status, record, length, ending
    line = '#'
    select case (kind)
    case (text_file, scratch_file, text_stream)
      if (random(2) == 0) then
        call note('READ without advancing at', place)
        read (unit, '(a1)', advance='no', iostat=status) line(1:1)
        call expect_read(status, 1, line)
      else
        call note('READ at', place)
        read (unit, '(a)', iostat=status) line
        call expect_read(status, len(line), line)
      end if
    case (byte_stream)
      length = random(min(10, max(size - place, 0)) + 1)
      call note('READ bytes', length)
      if (random(3) == 0) then
        place = random(size - length + 1)
        call note('READ bytes with POS', place)
        read (unit, pos=place + 1, iostat=status) line(:length)
      else
        read (unit, iostat=status) line(:length)
      end if
      call expect_number(status, 0, 'READ of bytes')
      call expect(line(:length) == bytes(place + 1:place + length), 'bytes', 0, 0)
      place = place + length
      writing = .false.
    case (text_direct, byte_direct)
      if (size < record_length) return
      record = 1 + random(size / record_length)
      call note('READ record', record)
      if (kind == text_direct) then
        read (unit, '(a)', rec=record, iostat=status) line(:record_length)
      else
        read (unit, rec=record, iostat=status) line(:record_length)
      end if
      call expect_number(status, 0, 'READ of a record')
      place = record * record_length
      call expect(line(:record_length) == bytes(place - record_length + 1:place), 'a record', 0, 0)
    case (record_file)
      if (behind_end .or. place > size) return
      if (place == size) then
        call note('READ at the end', place)
        read (unit, iostat=status) line(:1)
        call expect(is_iostat_end(status), 'READ at the end', status, -1)
        behind_end = .true.
        return
      end if
      ending = end_of_record(place)
      if (ending < 0) return
      length = ending - place - 8
      call note('READ a record at', place)
      read (unit, iostat=status) line(:length)
      call expect_number(status, 0, 'READ of a record')
      expected = bytes(place + 5:ending - 4)
      call expect(line(:length) == expected, 'what a record holds', 0, 0)
      place = ending
      writing = .false.
    end select
  end subroutine

  ! READ of one character without advancing (width 1) or of a line.
  subroutine expect_read(status, width, line)
    integer, intent(in) :: status, width
    character(*), intent(in) :: line
    integer :: length
    if (behind_end) then
      call expect(status > 0, 'READ behind the end', status, 5001)
      return
    end if
    writing = .false.
    began_record = .false.
    if (place >= size) then
      call expect(is_iostat_end(status), 'READ at the end', status, -1)
      behind_end = kind /= text_stream
      return
    end if
    length = index(bytes(place + 1:size), newline) - 1
    if (width == 1 .and. length /= 0) then
      call expect_number(status, 0, 'READ without advancing')
      place = place + 1
      call expect(line(1:1) == bytes(place:place), 'READ without advancing', iachar(line(1:1)), &
        iachar(bytes(place:place)))
      return
    end if
    if (width == 1) then
      call expect(is_iostat_eor(status), 'READ at the end of a record', status, -2)
    else if (kind == text_stream .and. length < 0) then
      call expect(is_iostat_end(status), 'READ of a last line without an end', status, -1)
    else
      call expect_number(status, 0, 'READ')
    end if
    if (length < 0) then
      length = size - place
      call expect(width == 1 .or. line == bytes(place + 1:size), 'the last line', 0, 0)
      place = size
    else
      call expect(width == 1 .or. line == bytes(place + 1:place + length), 'a line', 0, 0)
      place = place + length + 1
    end if
  end subroutine

  ! Where the unformatted record ends that begins at a place; -1 where none does.
  integer function end_of_record(start)
    integer, intent(in) :: start
    integer :: length
    end_of_record = -1
    if (start + 8 > size) return
    length = transfer(bytes(start + 1:start + 4), length)
    if (length < 1 .or. length > 200) return
    if (start + 8 + length > size) return
    if (bytes(start + 5 + length:start + 8 + length) == bytes(start + 1:start + 4)) end_of_record = start + 8 + length
  end function

  subroutine write_something()
    character(:), allocatable :: text
    character(record_length) :: record_text
    integer :: status, record
    character(4) :: marker
    text = random_text(random(20))
    if (random(6) == 0) text = random_text(random(130))
    select case (kind)
    case (text_file, scratch_file, text_stream)
      began_record = random(2) == 0
      if (behind_end) began_record = .false.
      if (began_record) then
        call note('WRITE without advancing', len(text))
        write (unit, '(a)', advance='no', iostat=status) text
      else
        call note('WRITE', len(text))
        write (unit, '(a)', iostat=status) text
        text = text // newline
      end if
      call expect_written(status, text, kind /= text_stream .or. .not. began_record)
    case (byte_stream)
      call note('WRITE bytes', len(text))
      write (unit, iostat=status) text
      call expect_written(status, text, .false.)
    case (text_direct, byte_direct)
      record = 1 + random(size / record_length + 2)
      record_text = text
      call note('WRITE record', record)
      if (kind == text_direct) then
        write (unit, '(a)', rec=record, iostat=status) record_text
      else
        write (unit, rec=record, iostat=status) record_text
      end if
      place = (record - 1) * record_length
      call expect_written(status, record_text, .false.)
    case (record_file)
      call note('WRITE a record', len(text) + 1)
      write (unit, iostat=status) text // 'x'
      marker = transfer(len(text) + 1, marker)
      call expect_written(status, marker // text // 'x' // marker, .true.)
    end select
  end subroutine

  ! A sequential file ends behind the record that was written, and a formatted stream behind a record that advanced; of a
  ! single byte that stands behind it there the run-time takes no notice.
  subroutine expect_written(status, text, last)
    integer, intent(in) :: status
    character(*), intent(in) :: text
    logical, intent(in) :: last
    if (behind_end) then
      ! The run-time takes the WRITE that it refuses for one before the endfile record.
      call expect(status > 0, 'WRITE behind the end', status, 5001)
      behind_end = .false.
      return
    end if
    call expect_number(status, 0, 'WRITE')
    call put(text)
    if (last .and. .not. (kind == text_stream .and. size == place + 1)) size = place
    writing = .true.
  end subroutine

  subroutine go_back()
    integer :: status, length
    if (kind == text_direct .or. kind == byte_direct .or. kind == text_stream .or. kind == byte_stream) return
    if (place > size) return
    call note('BACKSPACE at', place)
    if (kind == record_file) then
      if (.not. behind_end .and. place > 0) then
        if (place < 9) return
        length = transfer(bytes(place - 3:place), length)
        if (length < 1 .or. length > place - 8) return
        if (end_of_record(place - 8 - length) /= place) return
      end if
    end if
    backspace (unit, iostat=status)
    call expect_number(status, 0, 'BACKSPACE')
    if (behind_end) then
      behind_end = .false.
      place = size
    else if (place > 0) then
      if (writing) then
        if (began_record) call put(newline)
        size = place
      end if
      if (kind == record_file) then
        place = place - 8 - transfer(bytes(place - 3:place), length)
      else
        place = index(bytes(:place - 1), newline, back=.true.)
      end if
      writing = .false.
      began_record = .false.
    end if
  end subroutine

  subroutine go_to_the_beginning()
    integer :: status
    if (kind == text_direct .or. kind == byte_direct) return
    call note('REWIND at', place)
    rewind (unit, iostat=status)
    call expect_number(status, 0, 'REWIND')
    if (writing .and. began_record) call put(newline)
    place = 0
    writing = .false.
    began_record = .false.
    behind_end = .false.
  end subroutine

  subroutine flush_it()
    integer(4) :: ierror, descriptor
    logical :: flushed
    select case (random(4))
    case (0)
      call note('flushqq', 0)
      flushed = flushqq(unit)
      call expect(flushed, 'flushqq', 0, 1)
    case (1)
      call note('FLUSH', 0)
      flush (unit)
    case (2)
      call note('pxffileno and pxffdopen of its own', 0)
      call pxffileno(unit, descriptor, ierror)
      call pxffdopen(descriptor, unit, ' ', ierror)
      call expect_number(ierror, 0, 'pxffdopen of the unit''s own descriptor')
    case (3)
      call note('flush', 0)
      call flush(unit)
    end select
  end subroutine

  ! Of a record that is not complete the run-time has told the host nothing yet.
  subroutine ask()
    integer(int64) :: known
    if (began_record) return
    call note('INQUIRE', 0)
    inquire (unit, size=known)
    call expect_number(int(known), size, 'INQUIRE (SIZE=)')
  end subroutine

  subroutine close_unit()
    integer :: other, status
    character(most) :: found
    integer(int64) :: known
    if (kind == scratch_file) then
      close (unit)
      return
    end if
    taken = taken + merge(1, 0, taken < steps)
    call note('CLOSE', 0)
    close (unit)
    if (writing .and. began_record) call put(newline)
    open (newunit=other, file=path, status='old', access='stream', form='unformatted', action='read')
    inquire (other, size=known)
    call expect_number(int(known), size, 'the size of the file')
    read (other, iostat=status) found(:min(int(known), most))
    close (other)
    call expect(found(:min(int(known), size)) == bytes(:min(int(known), size)), 'the bytes of the file', 0, 0)
    if (wrong) call show(found(:int(known)), bytes(:size))
  end subroutine

  subroutine show(found, expected)
    character(*), intent(in) :: found, expected
    print '(3a)', 'found    "', found, '"'
    print '(3a)', 'expected "', expected, '"'
  end subroutine

end program
