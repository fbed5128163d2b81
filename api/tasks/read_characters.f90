! Read characters, and go back
! `fgetc` answers the next byte of a unit, wherever READ left it, and `ftell` tells where that is. `fseek` goes there
! again, and READ goes on from the place.
program read_characters
  use qxport, only: fgetc, fseek, ftell
  use qxport_numbers, only: SEEK_SET
  implicit none
  character :: ch
  character(80) :: line
  integer :: unit, place, words
  logical :: within
  open (newunit=unit, file='alpha.txt')
  write (unit, '(a)') 'a heading', 'some words,', 'and a few more'
  rewind (unit)
  read (unit, '(a)') line
  place = ftell(unit)
  words = 0
  within = .false.
  do while (fgetc(unit, ch) == 0)
    if (ch /= ' ' .and. ch /= new_line('a') .and. .not. within) words = words + 1
    within = ch /= ' ' .and. ch /= new_line('a')
  end do
  print '(a, i0, a, i0)', 'words behind byte ', place, ': ', words
  if (fseek(unit, place, SEEK_SET) == 0) read (unit, '(a)') line
  print '(a)', trim(line)
end program
